#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>
#include <optional>

#include "app/status_item.h"
#include "platform/linux/tray_menu.h"

namespace torvane {

// Shown as soon as the desktop has a tray: at login programs start before or after the panel, and
// Qt remembers for the life of the process that there was no StatusNotifier host when it first
// looked. So nothing asks Qt for a tray until one is there.
class QtStatusItem final : public StatusItem {
 public:
  QtStatusItem();
  ~QtStatusItem() override;
  QtStatusItem(const QtStatusItem&) = delete;
  QtStatusItem& operator=(const QtStatusItem&) = delete;

  void setIcon(const StatusIcon& icon) override;
  void setMenu(MenuDelegate& delegate) override;

 private:
  class PaletteListener;

  void lookForTray();
  void putIntoTray();
  void showIcon();
  void openAtPointer(QSystemTrayIcon::ActivationReason reason);

  std::optional<StatusIcon> icon_;
  TrayMenu contextMenu_;  // the panel's own, where it draws menus itself
  TrayMenu clickMenu_;    // for a plain click, drawn by Qt
  std::unique_ptr<QSystemTrayIcon> tray_;
  std::unique_ptr<QObject> paletteListener_;
  QTimer trayTimer_;
};

class QtStatusBar final : public StatusBar {
 public:
  [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem() override {
    return std::make_unique<QtStatusItem>();
  }
};

}  // namespace torvane
