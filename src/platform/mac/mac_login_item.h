#pragma once

#include "ports/login_item.h"

namespace torvane {

class MacLoginItem final : public LoginItem {
 public:
  [[nodiscard]] LoginItemStatus status() const override;
  [[nodiscard]] std::optional<std::string> registerItem() override;
  [[nodiscard]] std::optional<std::string> unregisterItem() override;
};

}  // namespace torvane
