#pragma once

#include "ports/workspace.h"

namespace torvane {

class QtWorkspace final : public Workspace {
 public:
  void openURL(const std::string& url) override;
  bool moveToTrash(const std::string& path) override;
};

}  // namespace torvane
