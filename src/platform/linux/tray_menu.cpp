#include "platform/linux/tray_menu.h"

#include <QAction>
#include <QApplication>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "platform/linux/menu_look.h"
#include "platform/linux/qt_text.h"

namespace torvane {
namespace {

// A tab would begin a column for shortcuts, a line break a second line.
std::string singleLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return text;
}

bool readTheSame(const MenuItem& a, const MenuItem& b) {
  return a.title == b.title && a.indentationLevel == b.indentationLevel &&
         a.isSeparator == b.isSeparator &&
         static_cast<bool>(a.action) == static_cast<bool>(b.action);
}

}  // namespace

TrayMenu::TrayMenu() {
  QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { update(); });
}

void TrayMenu::update() {
  if (delegate_ == nullptr || menu_.isVisible()) return;
  auto items = delegate_->menuNeedsUpdate();
  if (!isExported()) items = prepareToDraw(std::move(items));
  auto entries = entriesFor(std::move(items));
  for (Entry& entry : entries) entry.action = takeOver(entry);
  for (const Entry& gone : entries_) delete gone.action;
  entries_ = std::move(entries);
  qsizetype position = 0;
  for (Entry& entry : entries_) {
    if (entry.action == nullptr) entry.action = makeAction();
    show(entry);
    place(entry.action, position++);
  }
}

bool TrayMenu::isExported() {
  return menu_.platformMenu() != nullptr;
}

std::vector<MenuItem> TrayMenu::prepareToDraw(std::vector<MenuItem> items) {
  menu_.setPalette(withReadableInformation(QApplication::palette(&menu_)));
  const int widest = menu_.screen()->availableSize().width() / 2;
  return inLinesThatFit(std::move(items), menu_.fontMetrics(), widest);
}

bool TrayMenu::areTheSame(const Entry& a, const Entry& b) {
  return a.repetition == b.repetition && readTheSame(a.item, b.item);
}

std::vector<TrayMenu::Entry> TrayMenu::entriesFor(std::vector<MenuItem> items) {
  std::vector<Entry> entries;
  for (MenuItem& item : items) {
    const auto like = std::count_if(entries.begin(), entries.end(), [&](const Entry& entry) {
      return readTheSame(entry.item, item);
    });
    entries.push_back({std::move(item), static_cast<int>(like)});
  }
  return entries;
}

// The action of the entry that this one goes on being; null when it is new.
QAction* TrayMenu::takeOver(const Entry& entry) {
  const auto before = std::find_if(entries_.begin(), entries_.end(),
                                   [&](const Entry& old) { return areTheSame(old, entry); });
  return before != entries_.end() ? std::exchange(before->action, nullptr) : nullptr;
}

// Taken out and put in elsewhere, an action gets another number: only what is out of place moves.
void TrayMenu::place(QAction* action, qsizetype position) {
  QAction* there = menu_.actions().value(position);
  if (there != action) menu_.insertAction(there, action);
}

QAction* TrayMenu::makeAction() {
  auto* action = new QAction(&menu_);
  // Not a connection to the menu, which cuts its own when it moves an action.
  QObject::connect(action, &QAction::triggered, action, [this, action] { choose(action); });
  return action;
}

void TrayMenu::show(const Entry& entry) {
  const MenuItem& item = entry.item;
  QAction* action = entry.action;
  action->setSeparator(item.isSeparator);
  if (item.isSeparator) return;
  constexpr std::size_t kSpacesForALevel = 4;
  const std::string indent(kSpacesForALevel * static_cast<std::size_t>(item.indentationLevel), ' ');
  const std::string title = singleLine(item.title);
  action->setText(qtText(indent) + (isExported() ? exportedLabel(title) : qtLabel(title)));
  action->setEnabled(static_cast<bool>(item.action));
  // Qt never tells a panel that an entry has lost its mark, only that the mark is off.
  action->setCheckable(item.isChecked || (isExported() && action->isCheckable()));
  action->setChecked(item.isChecked);
}

void TrayMenu::choose(const QAction* action) {
  const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& each) { return each.action == action; });
  if (entry == entries_.end() || !entry->item.action) return;
  entry->action->setChecked(entry->item.isChecked);  // it is the delegate who says
  QMetaObject::invokeMethod(
      &menu_,
      [this, chosen = entry->item.action] {
        chosen();
        update();
      },
      Qt::QueuedConnection);
}

}  // namespace torvane
