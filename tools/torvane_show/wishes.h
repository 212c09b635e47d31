#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace torvane::show {

// A picture of a page that is wanted: a small one is there at once, a sharp one fills the screen.
struct Wish {
  int page = 1;
  bool isSharp = false;

  bool operator==(const Wish&) const = default;
};

inline constexpr int kSmallAround = 40;  // pages on both sides whose small pictures are wanted

// All that is wanted while a page is shown, the most urgent first: the page itself, small when
// there is nothing of it, its neighbours, and small pictures for jumps, the nearest first. Pages
// that are hard, which take long to draw, are drawn sharp only when they are shown: nothing else
// can be drawn meanwhile.
[[nodiscard]] std::vector<Wish> wishesFor(int page, int count,
                                          const std::function<bool(const Wish&)>& isThere,
                                          const std::function<bool(int page)>& isHard);

// Whether a page is hard whose small picture took that long.
[[nodiscard]] bool isHardToDraw(std::int64_t milliseconds);

}  // namespace torvane::show
