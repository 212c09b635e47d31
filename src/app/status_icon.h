#pragma once

#include <string>
#include <vector>

#include "ports/status_item.h"

namespace torvane {

// The icon for the names of the connected iPads, in order, and the engine's state.
[[nodiscard]] StatusIcon statusIcon(const std::vector<std::string>& connectedPeers,
                                    bool serverRunning);

}  // namespace torvane
