#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace torvane::show {

// What the engine asks, a line of JSON each: {"id":7,"do":"go_to","with":[3]}
struct Question {
  enum class Kind { kLook, kNext, kPrevious, kGoTo, kEnd, kBlank, kPage, kPicture };

  std::int64_t id = 0;
  Kind kind = Kind::kLook;
  int page = 0;   // kGoTo, kPage, kPicture; there may be no such page
  int width = 0;  // kPicture: pixels, from 16 to 4096
  bool on = false;
};

inline constexpr std::size_t kLongestQuestion = 4096;  // bytes of a line

// None for anything else, after which nothing more of that sender should be read.
[[nodiscard]] std::optional<Question> parseQuestion(std::string_view line);

}  // namespace torvane::show
