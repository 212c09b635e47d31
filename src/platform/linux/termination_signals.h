#pragma once

#include <QObject>
#include <functional>

namespace torvane {

// The signals by which a session or a terminal asks the program to end: SIGTERM, SIGINT, SIGHUP.
// One that was ignored when the program started stays ignored. One object at a time.
class TerminationSignals {
 public:
  // `onSignal` runs on the main thread, in its event loop.
  explicit TerminationSignals(std::function<void()> onSignal);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  QObject listener_;
};

}  // namespace torvane
