#pragma once

#include <string>
#include <string_view>

#include "ports/http_session.h"

namespace torvane {

// The engine's base address with `path` put behind it verbatim.
[[nodiscard]] std::string engineURL(std::string_view path);

// A request of the helper's own to the engine: nothing but the engine's port is ever reached.
[[nodiscard]] HttpRequest engineRequest(std::string_view path, double idleTimeout);

}  // namespace torvane
