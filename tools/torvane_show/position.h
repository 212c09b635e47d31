#pragma once

#include <optional>

namespace torvane::show {

// What of a deck is on the screen. Pages are numbered from 1.
struct Position {
  int page = 1;
  bool isBlack = false;
  bool atEnd = false;  // past the last page

  bool operator==(const Position&) const = default;
};

// What a clicker does: from a dark screen too, which is bright then. Both stay at their ends.
[[nodiscard]] Position next(const Position& from, int count);
[[nodiscard]] Position previous(const Position& from);

// None when there is no such page.
[[nodiscard]] std::optional<Position> goTo(int page, int count);

// The end is dark already.
[[nodiscard]] Position blanked(const Position& from, bool on);

// The screen for the show, counted from 0: the one that is looked at, or with several the first
// other one.
[[nodiscard]] int screenForShow(int screens, int lookedAt);

}  // namespace torvane::show
