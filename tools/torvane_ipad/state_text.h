#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "protocol/json.h"

namespace torvane::ipad {

// The engine's state in words, a line for each fact it holds.
[[nodiscard]] std::vector<std::string> describeState(const JsonObject& state);

// What became different, in words; nothing for changes that mean nothing to a presenter.
[[nodiscard]] std::vector<std::string> describeChanges(const JsonObject& before,
                                                       const JsonObject& after);

// Where the presentation is: "Slide 4 of 20, step 1 of 3: Results".
[[nodiscard]] std::string describePlace(const JsonObject& state);

// What becomes of the PDF, from the state's "export"; empty while none was asked for.
[[nodiscard]] std::string describeExport(const JsonObject& made);

// A member that is true; anything else counts as false.
[[nodiscard]] bool isTrue(const JsonObject& object, std::string_view key);

// A text of the engine, safe for a terminal; empty where there is none.
[[nodiscard]] std::string textOf(const JsonObject& object, std::string_view key);

// A member that is an object; empty where there is none.
[[nodiscard]] JsonObject objectMember(const JsonObject& object, std::string_view key);

}  // namespace torvane::ipad
