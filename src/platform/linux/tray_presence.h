#pragma once

#include <QDBusPendingCallWatcher>
#include <functional>
#include <memory>

namespace torvane {

// Whether the desktop has a status area now: a StatusNotifier host on the session bus or an XEmbed
// tray on the X display. Never starts one.
class TrayPresence {
 public:
  explicit TrayPresence(std::function<void(bool isPresent)> onAnswer);

  // Answers from the event loop when a panel has to be asked, else at once; by and by in any case,
  // for a panel that hangs counts as none. A question while another waits is that one.
  void ask();

 private:
  void askStatusNotifierHost();

  std::function<void(bool)> onAnswer_;
  std::unique_ptr<QDBusPendingCallWatcher> waiting_;
};

}  // namespace torvane
