#pragma once

#include <string>
#include <vector>

#include "protocol/json.h"

namespace torvane::ipad {

// The engine's state in words, a line for each fact it holds.
[[nodiscard]] std::vector<std::string> describeState(const JsonObject& state);

// What became different, in words; nothing for changes that mean nothing to a presenter.
[[nodiscard]] std::vector<std::string> describeChanges(const JsonObject& before,
                                                       const JsonObject& after);

}  // namespace torvane::ipad
