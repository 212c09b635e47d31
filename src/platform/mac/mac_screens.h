#pragma once

#include "ports/window_server.h"

namespace torvane {

class MacScreens final : public Screens {
 public:
  [[nodiscard]] std::vector<Rect> frames() const override;
  [[nodiscard]] std::optional<Rect> mainFrame() const override;
};

}  // namespace torvane
