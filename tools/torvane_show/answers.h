#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "torvane_show/deck.h"
#include "torvane_show/position.h"

namespace torvane::show {

// Answers to the engine's questions, a line of JSON each, with its end.

// {"id":7,"answer":{…}}: what is on the screen, or where a show would begin.
[[nodiscard]] std::string lookAnswer(std::int64_t id, const Deck& deck, const Position& shown,
                                     bool presenting);

[[nodiscard]] std::string pageAnswer(std::int64_t id, const PageFacts& page);

// `picture` is the base64 of a PNG or JPEG file.
[[nodiscard]] std::string pictureAnswer(std::int64_t id, std::string_view picture);

// For an action: it was done.
[[nodiscard]] std::string doneAnswer(std::int64_t id);

// {"id":7,"refused":"There is no such page."}
[[nodiscard]] std::string refusal(std::int64_t id, std::string_view why);

inline constexpr std::string_view kNoSuchPage = "There is no such page.";
inline constexpr std::string_view kNoShow = "No slide show runs: start it first.";
inline constexpr std::string_view kNoPicture = "This page cannot be drawn.";

}  // namespace torvane::show
