#include "torvane_show/line_buffer.h"

#include <algorithm>

namespace torvane::show {

std::optional<std::string> LineBuffer::take() {
  const auto end = bytes_.find('\n');
  if (end == std::string::npos) return std::nullopt;
  std::string line = bytes_.substr(0, end);
  bytes_.erase(0, end + 1);
  return line;
}

bool LineBuffer::isTooLong() const {
  return std::min(bytes_.find('\n'), bytes_.size()) > longest_;
}

}  // namespace torvane::show
