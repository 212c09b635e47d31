#pragma once

#include "ports/permissions.h"

namespace torvane {

// This desktop asks for no permission to control other applications.
class GrantedAccessibility final : public Accessibility {
 public:
  [[nodiscard]] bool isTrusted() const override { return true; }
  void promptForTrust() override {}
};

// This desktop keeps no store of privacy permissions.
class GrantedPrivacyDatabase final : public PrivacyDatabase {
 public:
  [[nodiscard]] bool canRead(const std::string&) const override { return true; }
};

}  // namespace torvane
