#include "torvane_show/wishes.h"

namespace torvane::show {

std::vector<Wish> wishesFor(int page, int count, const std::function<bool(const Wish&)>& isThere,
                            const std::function<bool(int page)>& isHard) {
  std::vector<Wish> wishes;
  const auto want = [&](int number, bool isSharp) {
    const Wish wish{number, isSharp};
    if (number < 1 || number > count || isThere(wish)) return;
    if (number == page || !isSharp || !isHard(number)) wishes.push_back(wish);
  };
  if (!isThere({page, true})) want(page, false);
  want(page, true);
  for (const bool isSharp : {false, true}) {
    for (const int number : {page + 1, page - 1}) want(number, isSharp);
  }
  for (int distance = 2; distance <= kSmallAround; ++distance) {
    want(page + distance, false);
    want(page - distance, false);
  }
  return wishes;
}

bool isHardToDraw(std::int64_t milliseconds) {
  constexpr std::int64_t kHard = 300;  // a sharp one takes many times that
  return milliseconds >= kHard;
}

}  // namespace torvane::show
