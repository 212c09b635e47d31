#pragma once

#include <optional>
#include <string>

namespace torvane {

// What the desktop knows of this program as something to start at login.
enum class LoginItemStatus {
  notRegistered = 0,
  enabled = 1,
  requiresApproval = 2,  // registered, but switched off by the user or the desktop
  notFound = 3           // registered for a program that is not this one
};

// The program's registration for login. The desktop keeps it, and it alone: nothing is cached.
// Main thread only.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  [[nodiscard]] virtual LoginItemStatus status() const = 0;

  // Both give a description for the user when they fail, and none when they are done.
  // `registerItem` replaces an older registration.
  [[nodiscard]] virtual std::optional<std::string> registerItem() = 0;
  [[nodiscard]] virtual std::optional<std::string> unregisterItem() = 0;
};

}  // namespace torvane
