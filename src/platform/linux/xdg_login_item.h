#pragma once

#include "ports/login_item.h"

namespace torvane {

// A desktop entry in the user's autostart folder. The file is the only truth: whoever switches it
// off, edits or removes it has changed the registration.
class XdgLoginItem final : public LoginItem {
 public:
  // Both absolute; `program` is what starts at login.
  XdgLoginItem(const std::string& autostartFolder, std::string program);

  [[nodiscard]] LoginItemStatus status() const override;
  [[nodiscard]] std::optional<std::string> registerItem() override;
  [[nodiscard]] std::optional<std::string> unregisterItem() override;

 private:
  std::string path_;
  std::string program_;
};

// The folder whose entries the user's sessions start.
[[nodiscard]] std::string autostartFolder(const std::string& homeDirectory);

}  // namespace torvane
