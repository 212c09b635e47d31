#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace torvane {

// A virtual clock with the work that is due on the main thread and on background threads. Nothing
// runs by itself: a test lets time pass, and whatever falls due runs in order, however long that
// takes in real life.
class SimulatedTime {
 public:
  [[nodiscard]] double now() const { return now_; }
  [[nodiscard]] bool isMainThread() const { return isMainThread_; }

  void scheduleMain(double seconds, std::function<void()> work) {
    schedule(seconds, true, std::move(work));
  }
  void scheduleBackground(double seconds, std::function<void()> work) {
    schedule(seconds, false, std::move(work));
  }

  // Runs what is due now, and what that makes due now. May be called from within work, as a modal
  // alert's nested loop does.
  void runDue() { advance(0); }

  // Lets `seconds` pass.
  void advance(double seconds) {
    const double end = now_ + seconds;
    while (!queue_.empty() && queue_.begin()->first.first <= end) runNext();
    now_ = std::max(now_, end);
  }

  // Runs the one piece of work that is due next, whenever that is. There must be one.
  void runNext() {
    auto next = queue_.extract(queue_.begin());
    now_ = std::max(now_, next.key().first);
    run(next.mapped());
  }

  // Lets time pass for the rest of the world while the main thread is held.
  void advanceWhileMainIsHeld(double seconds) {
    const double end = now_ + seconds;
    for (auto it = queue_.begin(); it != queue_.end() && it->first.first <= end;) {
      if (it->second.onMain) {
        ++it;
        continue;
      }
      now_ = std::max(now_, it->first.first);
      auto next = queue_.extract(it);
      run(next.mapped());
      it = queue_.begin();
    }
    now_ = end;
  }

 private:
  struct Work {
    bool onMain;
    std::function<void()> run;
  };

  void schedule(double seconds, bool onMain, std::function<void()> work) {
    queue_.emplace(std::pair(now_ + seconds, sequence_++), Work{onMain, std::move(work)});
  }

  void run(const Work& work) {
    const bool before = std::exchange(isMainThread_, work.onMain);
    work.run();
    isMainThread_ = before;
  }

  double now_ = 0;
  std::uint64_t sequence_ = 0;
  bool isMainThread_ = true;
  std::map<std::pair<double, std::uint64_t>, Work> queue_;  // by time, then by order of arrival
};

}  // namespace torvane
