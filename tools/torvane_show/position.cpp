#include "torvane_show/position.h"

#include <algorithm>

namespace torvane::show {

Position next(const Position& from, int count) {
  if (from.page >= count) return {.page = from.page, .atEnd = true};
  return {.page = from.page + 1};
}

Position previous(const Position& from) {
  if (from.atEnd) return {.page = from.page};
  return {.page = std::max(from.page - 1, 1)};
}

std::optional<Position> goTo(int page, int count) {
  if (page < 1 || page > count) return std::nullopt;
  return Position{.page = page};
}

Position blanked(const Position& from, bool on) {
  Position to = from;
  to.isBlack = on && !from.atEnd;
  return to;
}

int screenForShow(int screens, int lookedAt) {
  if (screens > 1) return lookedAt == 0 ? 1 : 0;
  return 0;
}

}  // namespace torvane::show
