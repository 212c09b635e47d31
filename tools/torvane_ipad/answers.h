#pragma once

#include <optional>

#include "torvane_ipad/console.h"
#include "torvane_ipad/signed_requests.h"

namespace torvane::ipad {

// The object that a successful reply's body holds; otherwise reports why there is none.
[[nodiscard]] std::optional<JsonObject> objectIn(const Reply& reply, const Console& console);

// Prints the reply's body, or writes it to `file` unless that is empty. Reports error statuses.
[[nodiscard]] Exit printReply(const Reply& reply, const std::string& file, const Console& console);

// What a status of 400 or more means; empty for the others.
[[nodiscard]] std::string problemOf(const Reply& reply);

}  // namespace torvane::ipad
