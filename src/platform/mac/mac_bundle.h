#pragma once

#include "ports/bundle.h"

namespace torvane {

class MacBundle final : public Bundle {
 public:
  [[nodiscard]] std::string path() const override;
  [[nodiscard]] std::optional<std::string> executablePath() const override;
  [[nodiscard]] std::optional<std::string> pathForResource(const std::string& name,
                                                           const std::string& type) const override;
  [[nodiscard]] std::optional<JsonValue> infoValue(const std::string& key) const override;
};

}  // namespace torvane
