#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>
#include <optional>

#include "platform/linux/stand_in_window.h"
#include "platform/linux/tray_menu.h"
#include "platform/linux/tray_presence.h"
#include "ports/status_item.h"

namespace torvane {

// Shown as soon as the desktop has a tray: at login programs start before or after the panel, and
// Qt remembers for the life of the process that there was no StatusNotifier host when it first
// looked. So nothing asks Qt for a tray until one is there. A desktop that has had none for some
// seconds gets a small window with the same menu instead, for as long as that lasts.
class QtStatusItem final : public StatusItem {
 public:
  explicit QtStatusItem(X11Watch* x11);  // null where there is no X server
  ~QtStatusItem() override;
  QtStatusItem(const QtStatusItem&) = delete;
  QtStatusItem& operator=(const QtStatusItem&) = delete;

  void setIcon(const StatusIcon& icon) override;
  void setMenu(MenuDelegate& delegate) override;

  [[nodiscard]] StandInWindow& standIn() { return standIn_; }

 private:
  class PaletteListener;

  void trayWasLookedFor(bool isPresent);
  void standInForTray();
  void putIntoTray();
  void showIcon();
  void openAtPointer(QSystemTrayIcon::ActivationReason reason);

  std::optional<StatusIcon> icon_;
  TrayMenu contextMenu_;  // the panel's own, where it draws menus itself
  TrayMenu clickMenu_;    // for a plain click, drawn by Qt
  StandInWindow standIn_;
  bool isStandingIn_ = false;
  QElapsedTimer withoutTray_;  // valid while there is none
  std::unique_ptr<QSystemTrayIcon> tray_;
  std::unique_ptr<QObject> paletteListener_;
  QTimer trayTimer_;
  TrayPresence presence_;
};

class QtStatusBar final : public StatusBar {
 public:
  explicit QtStatusBar(X11Watch* x11) : x11_(x11) {}

  [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem() override;

  // Brings up the window with the menu, tray or not: the user has started the program once more.
  void showWindow();

 private:
  X11Watch* x11_;
  QPointer<StandInWindow> window_;  // of the item made last
};

}  // namespace torvane
