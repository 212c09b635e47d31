#include "torvane_ipad/progress_line.h"

#include <unistd.h>

#include <cstdio>

namespace torvane::ipad {
namespace {

constexpr const char* kStartOfLine = "\r\033[K";  // and what stood there is gone

bool hasTerminal() {
  return ::isatty(STDERR_FILENO) != 0;
}

}  // namespace

void ProgressLine::show(const std::string& text, const JsonObject& fact) {
  if (text == shown_) return;
  shown_ = text;
  if (console_.isJson()) return console_.say("progress", "", fact);
  if (hasTerminal()) std::fprintf(stderr, "%s%s", kStartOfLine, text.c_str());
}

void ProgressLine::clear() {
  if (!shown_.empty() && !console_.isJson() && hasTerminal()) std::fputs(kStartOfLine, stderr);
  shown_.clear();
}

}  // namespace torvane::ipad
