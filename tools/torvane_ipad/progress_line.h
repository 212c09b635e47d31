#pragma once

#include <string>

#include "torvane_ipad/console.h"

namespace torvane::ipad {

// How far something has got, in a line of the terminal that is written over again and again, and
// taken away at the end. Where nobody looks at a terminal it says nothing; in JSON it is an event.
class ProgressLine {
 public:
  explicit ProgressLine(const Console& console) : console_(console) {}
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // Says nothing that was said last.
  void show(const std::string& text, const JsonObject& fact);
  void clear();

 private:
  const Console& console_;
  std::string shown_;
};

}  // namespace torvane::ipad
