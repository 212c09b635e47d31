#pragma once

#include "ports/window_server.h"

namespace torvane {

class MacWindowServer final : public WindowServer {
 public:
  [[nodiscard]] std::optional<std::vector<WindowInfo>> onScreenWindows() override;
};

}  // namespace torvane
