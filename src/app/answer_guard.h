#pragma once

#include <optional>

namespace torvane {

// Keeps a key or click that was meant for something else from answering an alert that came up
// meanwhile: nothing counts in the first second, nor while a key or mouse button is held that was
// held by then. The second begins for clicks when the alert can be seen, and for keys each time
// that it gets the keyboard. What acts on a button itself, as a screen reader does, is not asked
// about.
//
// Times are seconds of any one clock.
class AnswerGuard {
 public:
  static constexpr double kWait = 1;
  static constexpr double kLookInterval = 0.02;  // between two looks

  void didShow(double now) { clicks_ = {now}; }
  void didGetKeyboard(double now) { keys_ = {now}; }

  // To be called again and again, with other events handled between, while it needs looks.
  void look(double now, bool isAnythingHeld) {
    clicks_.look(now, isAnythingHeld);
    keys_.look(now, isAnythingHeld);
  }
  [[nodiscard]] bool needsLooks() const { return clicks_.isOn() || keys_.isOn(); }

  [[nodiscard]] bool takesClicks() const { return clicks_.isOver(); }
  // A key that repeats itself was pressed for something else, or has answered already.
  [[nodiscard]] bool takesKeys(bool isRepeat) const { return keys_.isOver() && !isRepeat; }

 private:
  // Over with the second look in a row that finds nothing held: what happened before the first has
  // arrived by then.
  struct Wait {
    std::optional<double> since;
    int quietLooks = 0;

    void look(double now, bool isAnythingHeld) {
      if (!isOn() || now - *since < kWait) return;
      quietLooks = isAnythingHeld ? 0 : quietLooks + 1;
    }
    [[nodiscard]] bool isOn() const { return since && !isOver(); }
    [[nodiscard]] bool isOver() const { return quietLooks >= 2; }
  };

  Wait clicks_, keys_;
};

}  // namespace torvane
