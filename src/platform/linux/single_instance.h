#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <string>

#include "platform/posix/unique_fd.h"

namespace torvane {

// The one process that runs from an application folder in a user's session. It holds a lock, which
// the system takes back however the process ends, and answers others at a socket beside it.
class SingleInstance {
 public:
  // Null when the program runs already and has been asked to show itself; blocks for some seconds
  // at most, while an earlier one is about to end. `runtimeFolder` belongs to the session and is
  // its user's alone; where there is none, nobody is held off.
  [[nodiscard]] static std::unique_ptr<SingleInstance> claim(const std::string& runtimeFolder,
                                                             const std::string& bundlePath);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  // From now on calls `onLaunch` from the event loop each time the program is launched again.
  void onSecondLaunch(std::function<void()> onLaunch);

 private:
  SingleInstance(UniqueFd lock, std::string socketPath);
  void answer();

  UniqueFd lock_;
  std::string socketPath_;
  UniqueFd socket_;
  std::function<void()> onLaunch_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace torvane
