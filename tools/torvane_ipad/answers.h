#pragma once

#include "torvane_ipad/console.h"
#include "torvane_ipad/signed_requests.h"

namespace torvane::ipad {

// Prints the reply's body, or writes it to `file` unless that is empty. `problem` is what went
// wrong, empty when nothing did, and is reported too.
[[nodiscard]] Exit printReply(const Reply& reply, const std::string& problem,
                              const std::string& file, const Console& console);

}  // namespace torvane::ipad
