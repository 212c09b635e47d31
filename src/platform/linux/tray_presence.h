#pragma once

#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <functional>
#include <memory>

#include "platform/linux/x11_watch.h"

namespace torvane {

// Whether the desktop has a status area now: a StatusNotifier host on the session bus or an XEmbed
// tray on the X display. Never starts one.
class TrayPresence {
 public:
  // `x11` is null where there is no X server. The answer is given soon after a panel has said that
  // it comes or goes, too.
  TrayPresence(X11Watch* x11, std::function<void(bool isPresent)> onAnswer);
  ~TrayPresence();
  TrayPresence(const TrayPresence&) = delete;
  TrayPresence& operator=(const TrayPresence&) = delete;

  // Answers from the event loop when a panel has to be asked, else at once; by and by in any case,
  // for a panel that hangs counts as none. A question while another waits comes after that.
  void ask();

 private:
  [[nodiscard]] bool hasXEmbedTray();
  void listenToPanels();
  void askStatusNotifierHost();

  X11Watch* x11_;
  std::function<void(bool)> onAnswer_;
  QDBusServiceWatcher watcherService_;
  QTimer soon_;
  std::unique_ptr<QDBusPendingCallWatcher> waiting_;
  bool isToAskAgain_ = false;
};

}  // namespace torvane
