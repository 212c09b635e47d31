#pragma once

#include "ports/code_check.h"

namespace torvane {

class MacCodeCheck final : public CodeCheck {
 public:
  [[nodiscard]] bool meets(const std::string& path, const std::string& requirement) const override;
};

}  // namespace torvane
