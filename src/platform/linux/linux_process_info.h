#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "ports/process_info.h"

namespace torvane {

// Everything is read once, on construction.
class LinuxProcessInfo final : public ProcessInfo {
 public:
  // `machineInfo`: the file in which the desktop keeps the computer's pretty name.
  explicit LinuxProcessInfo(const std::string& machineInfo = "/etc/machine-info");

  [[nodiscard]] std::optional<std::string> hostName() const override { return hostName_; }
  [[nodiscard]] std::string homeDirectory() const override { return homeDirectory_; }
  [[nodiscard]] std::string temporaryDirectory() const override { return temporaryDirectory_; }
  [[nodiscard]] std::string logDirectory() const override { return logDirectory_; }
  [[nodiscard]] std::map<std::string, std::string> environment() const override {
    return environment_;
  }
  [[nodiscard]] int processIdentifier() const override;

 private:
  std::optional<std::string> hostName_;
  std::string homeDirectory_;
  std::string temporaryDirectory_;
  std::string logDirectory_;
  std::map<std::string, std::string> environment_;
};

// The value of PRETTY_HOSTNAME in a file of shell-like assignments; empty when it has none.
[[nodiscard]] std::string prettyHostName(std::string_view machineInfo);

// A network name without its domain.
[[nodiscard]] std::string shortHostName(std::string_view networkName);

}  // namespace torvane
