#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace torvane::show {

// Lines out of what arrives in pieces.
class LineBuffer {
 public:
  explicit LineBuffer(std::size_t longest) : longest_(longest) {}

  void add(std::string_view bytes) { bytes_.append(bytes); }

  // The next whole line without its end; none until there is one.
  [[nodiscard]] std::optional<std::string> take();

  // Whether the line that has begun is longer than any may be, and nothing can come of it.
  [[nodiscard]] bool isTooLong() const;

 private:
  std::size_t longest_;
  std::string bytes_;
};

}  // namespace torvane::show
