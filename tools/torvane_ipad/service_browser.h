#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "torvane_ipad/helper_address.h"

namespace torvane::ipad {

struct NetworkSearch {
  std::vector<HelperAddress> helpers;
  std::string problem;  // empty: the network could be searched
};

// Listens to what helpers announce on the network for `duration`, or until `isEnough` says so of
// what was found. Each helper is listed once.
[[nodiscard]] NetworkSearch searchNetwork(
    std::chrono::milliseconds duration,
    const std::function<bool(const std::vector<HelperAddress>&)>& isEnough);

}  // namespace torvane::ipad
