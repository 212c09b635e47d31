#pragma once

#include <cstdint>

namespace torvane {

// The service type under which this computer makes itself known to nearby iPads.
inline constexpr const char* SERVICE_TYPE = "torvane";

// The engine's HTTP port on 127.0.0.1.
inline constexpr std::uint16_t PORT = 8484;

}  // namespace torvane
