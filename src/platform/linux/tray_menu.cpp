#include "platform/linux/tray_menu.h"

#include <QAction>
#include <algorithm>

#include "platform/linux/qt_text.h"

namespace torvane {
namespace {

bool looksTheSame(const MenuItem& a, const MenuItem& b) {
  return a.title == b.title && a.indentationLevel == b.indentationLevel &&
         a.isSeparator == b.isSeparator && a.isChecked == b.isChecked &&
         static_cast<bool>(a.action) == static_cast<bool>(b.action);
}

// A tab would begin a column for shortcuts, a line break a second line.
std::string singleLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return text;
}

}  // namespace

TrayMenu::TrayMenu() {
  QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { update(); });
}

void TrayMenu::update() {
  if (delegate_ == nullptr || menu_.isVisible()) return;
  auto items = delegate_->menuNeedsUpdate();
  const bool isSame =
      std::equal(items.begin(), items.end(), items_.begin(), items_.end(), looksTheSame);
  items_ = std::move(items);
  if (!isSame || isExported() != labelsAreExported_) fill();
}

bool TrayMenu::isExported() {
  return menu_.platformMenu() != nullptr;
}

void TrayMenu::fill() {
  labelsAreExported_ = isExported();
  menu_.clear();
  for (std::size_t i = 0; i < items_.size(); ++i) addItem(i);
}

void TrayMenu::addItem(std::size_t index) {
  const MenuItem& item = items_[index];
  if (item.isSeparator) {
    menu_.addSeparator();
    return;
  }
  constexpr std::size_t kSpacesForALevel = 4;
  const std::string indent(kSpacesForALevel * static_cast<std::size_t>(item.indentationLevel), ' ');
  const std::string title = singleLine(item.title);
  QAction* action = menu_.addAction(qtText(indent) +
                                    (labelsAreExported_ ? exportedLabel(title) : qtLabel(title)));
  action->setEnabled(static_cast<bool>(item.action));
  action->setCheckable(item.isChecked);
  action->setChecked(item.isChecked);
  QObject::connect(action, &QAction::triggered, &menu_, [this, action, index] {
    action->setChecked(items_[index].isChecked);  // it is the delegate who says
    QMetaObject::invokeMethod(
        &menu_,
        [this, chosen = items_[index].action] {
          chosen();
          update();
        },
        Qt::QueuedConnection);
  });
}

}  // namespace torvane
