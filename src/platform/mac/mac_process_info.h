#pragma once

#include "ports/process_info.h"

namespace torvane {

// Everything is read once, on construction.
class MacProcessInfo final : public ProcessInfo {
 public:
  MacProcessInfo();

  [[nodiscard]] std::optional<std::string> hostName() const override { return hostName_; }
  [[nodiscard]] std::string homeDirectory() const override { return homeDirectory_; }
  [[nodiscard]] std::string temporaryDirectory() const override { return temporaryDirectory_; }
  [[nodiscard]] std::string logDirectory() const override {
    return homeDirectory_ + "/Library/Logs/Torvane P2P Helper";
  }
  [[nodiscard]] std::map<std::string, std::string> environment() const override {
    return environment_;
  }
  [[nodiscard]] int processIdentifier() const override { return processIdentifier_; }

 private:
  std::optional<std::string> hostName_;
  std::string homeDirectory_;
  std::string temporaryDirectory_;
  std::map<std::string, std::string> environment_;
  int processIdentifier_;
};

}  // namespace torvane
