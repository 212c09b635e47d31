#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "platform/linux/tray_menu.h"
#include "ports/status_item.h"

namespace torvane {

// What a status item is on a desktop without a status area: a small window with its icon, its
// tooltip as a line of text without the program's name, and a button that opens its menu. Hidden at
// first; closing it hides it.
class StandInWindow final : public QWidget {
 public:
  StandInWindow();

  void setIcon(const StatusIcon& icon);
  void setMenu(MenuDelegate& delegate);

  void showBehind();   // takes the keyboard from nobody
  void showInFront();  // the user asked for it

  // Its parts.
  [[nodiscard]] TrayMenu& menu() { return menu_; }
  [[nodiscard]] const QLabel& state() const { return state_; }
  [[nodiscard]] const QLabel& picture() const { return picture_; }
  [[nodiscard]] QPushButton& button() { return button_; }

 private:
  TrayMenu menu_;
  QLabel picture_;
  QLabel state_;
  QPushButton button_{"Menu"};
};

}  // namespace torvane
