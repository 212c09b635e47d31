#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ports/geometry.h"

namespace torvane {

// A modal alert. All texts are plain text; nothing in them is interpreted.
struct AlertContent {
  enum class Style { warning = 0, informational = 1 };

  std::string message;                        // the bold title line
  std::string informativeText;                // the text below it
  std::vector<std::string> buttons = {"OK"};  // first to last; the first is the default
  Style style = Style::informational;
  bool isGuarded = false;           // takes keys and clicks as AnswerGuard (answer_guard.h) says
  std::optional<Rect> screen = {};  // of Screens (window_server.h), to open on; none: any

  bool operator==(const AlertContent&) const = default;
};

// The answer for the first button; the second answers one more, and so on.
inline constexpr int kAlertFirstButton = 1000;

class Alerts {
 public:
  virtual ~Alerts() = default;

  // Shows an application-modal alert and waits for its answer in a nested loop, in which timers
  // and queued work go on. It stands above the ink, and has the keyboard if the program was brought
  // to the front (application.h) or is in front. An alert closed without a button answers as its
  // last button. Main thread only.
  virtual int runModal(const AlertContent& content) = 0;
};

}  // namespace torvane
