#pragma once

#include <map>
#include <optional>
#include <string>

namespace torvane {

// This process and the computer it runs on. Any thread; the answers do not change.
class ProcessInfo {
 public:
  virtual ~ProcessInfo() = default;

  // The computer's name as its user knows it; none when it has no name.
  [[nodiscard]] virtual std::optional<std::string> hostName() const = 0;

  // Absolute path of the user's home folder, without a trailing slash.
  [[nodiscard]] virtual std::string homeDirectory() const = 0;

  // Absolute path of the folder for temporary files that belongs to this user alone, without a
  // trailing slash. It need not exist yet.
  [[nodiscard]] virtual std::string temporaryDirectory() const = 0;

  // Absolute path of the folder for what the engine prints, without a trailing slash. It need not
  // exist yet.
  [[nodiscard]] virtual std::string logDirectory() const = 0;

  [[nodiscard]] virtual std::map<std::string, std::string> environment() const = 0;
  [[nodiscard]] virtual int processIdentifier() const = 0;
};

}  // namespace torvane
