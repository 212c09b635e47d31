#include "platform/linux/qt_alerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <optional>

#include "platform/linux/qt_answer_guard.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/qt_text.h"
#include "platform/linux/qt_x11.h"

namespace torvane {
namespace {

void showAsPlainText(QMessageBox& box, const AlertContent& content) {
  box.setTextFormat(Qt::PlainText);
  box.setText(qtText(content.message));
  box.setInformativeText(qtText(content.informativeText));
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  for (QLabel* label : box.findChildren<QLabel*>()) label->setTextFormat(Qt::PlainText);
  box.setAccessibleName(box.text());  // a window's title, else, which is the program's name
  box.setAccessibleDescription(box.informativeText());

  if (auto* title = box.findChild<QLabel*>("qt_msgbox_label")) {
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    title->setWordWrap(true);
  }
}

// A line that begins with a bullet goes on below its first word, not below the bullet.
void indentBullets(const QMessageBox& box) {
  const QString bullet = "•  ";
  const auto* label = box.findChild<QLabel*>("qt_msgbox_informativelabel");
  if (label == nullptr) return;
  (void)label->sizeHint();  // has it lay out its text
  const auto* document = label->findChild<QTextDocument*>();
  if (document == nullptr) return;
  const int indent = label->fontMetrics().horizontalAdvance(bullet);
  for (auto line = document->begin(); line.isValid(); line = line.next()) {
    if (!line.text().startsWith(bullet)) continue;
    QTextBlockFormat hanging;
    hanging.setLeftMargin(indent);
    hanging.setTextIndent(-indent);
    QTextCursor(line).mergeBlockFormat(hanging);
  }
}

// Beside a few words the window's title, too, would have no room.
void keepFromBeingNarrow(QMessageBox& box) {
  constexpr int kLeastTextWidth = 280;
  auto* grid = qobject_cast<QGridLayout*>(box.layout());
  if (grid == nullptr) return;
  const int texts = grid->columnCount() - 1;  // beside the icon
  grid->setColumnMinimumWidth(texts, kLeastTextWidth);
}

void showIcon(QMessageBox& box, AlertContent::Style style) {
  constexpr int kSide = 48;
  if (style == AlertContent::Style::warning) {
    box.setIcon(QMessageBox::Warning);
  } else {
    box.setIconPixmap(QApplication::windowIcon().pixmap(kSide));
  }
}

// All of one role: desktops put buttons of different roles into an order of their own.
QList<QPushButton*> addButtons(QMessageBox& box, const AlertContent& content) {
  QList<QPushButton*> buttons;
  for (const std::string& title : content.buttons) {
    QPushButton* button = box.addButton(qtLabel(title), QMessageBox::ActionRole);
    button->setAccessibleName(qtText(title));
    buttons.append(button);
  }
  box.setDefaultButton(buttons.first());
  box.setEscapeButton(buttons.last());
  return buttons;
}

void placeOn(const Rect& screen, QMessageBox& box) {
  box.adjustSize();
  QRect place = box.rect();
  place.moveCenter(QtScreens::geometryOf(screen).center());
  box.move(place.topLeft());
}

void show(QMessageBox& box, bool takesKeyboard) {
  box.setAttribute(Qt::WA_ShowWithoutActivating, !takesKeyboard);
  box.show();
  box.raise();
  if (!takesKeyboard) return;
  box.activateWindow();
  bringToFrontRegardless(*box.windowHandle());
}

}  // namespace

int QtAlerts::runModal(const AlertContent& content) {
  QMessageBox box;
  box.setWindowTitle("Torvane P2P Helper");
  box.setWindowModality(Qt::ApplicationModal);
  box.setWindowFlag(Qt::WindowStaysOnTopHint);
  showIcon(box, content.style);
  showAsPlainText(box, content);
  const auto buttons = addButtons(box, content);
  keepFromBeingNarrow(box);
  indentBullets(box);

  std::optional<QtAnswerGuard> guard;
  if (content.isGuarded) guard.emplace(box);
  if (content.screen) placeOn(*content.screen, box);
  show(box, application_.takeActivation());
  box.exec();
  const auto chosen = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
  return kAlertFirstButton + static_cast<int>(chosen >= 0 ? chosen : buttons.size() - 1);
}

}  // namespace torvane
