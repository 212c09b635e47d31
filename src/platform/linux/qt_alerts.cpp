#include "platform/linux/qt_alerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "platform/linux/qt_text.h"

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

void bringToFront(QMessageBox& box) {
  box.show();
  box.raise();
  box.activateWindow();
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

  bringToFront(box);
  box.exec();
  const auto chosen = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
  return kAlertFirstButton + static_cast<int>(chosen >= 0 ? chosen : buttons.size() - 1);
}

}  // namespace torvane
