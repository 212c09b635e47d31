#pragma once

#include "ports/permissions.h"

namespace torvane {

class MacAccessibility final : public Accessibility {
 public:
  [[nodiscard]] bool isTrusted() const override;
  void promptForTrust() override;
};

class MacPrivacyDatabase final : public PrivacyDatabase {
 public:
  [[nodiscard]] bool canRead(const std::string& path) const override;
};

}  // namespace torvane
