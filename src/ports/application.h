#pragma once

namespace torvane {

// The running program as the desktop sees it. Main thread only.
class Application {
 public:
  virtual ~Application() = default;

  // Brings the program to the front over other applications, so that the next alert is seen and
  // gets the keyboard.
  virtual void activateIgnoringOtherApps() = 0;

  // Starts the normal way out: the delegate's applicationWillTerminate() runs, then the process
  // ends with status 0. Returns at once.
  virtual void terminate() = 0;
};

}  // namespace torvane
