#pragma once

#include <string>

namespace torvane {

// The permission to control other applications. Main thread only.
class Accessibility {
 public:
  virtual ~Accessibility() = default;

  // Whether this process has it now. A system that asks for no such permission answers true.
  [[nodiscard]] virtual bool isTrusted() const = 0;

  // Lets the system show its own prompt when the permission is missing; returns at once.
  virtual void promptForTrust() = 0;
};

// The system's store of privacy permissions, readable only with full access to the disk.
class PrivacyDatabase {
 public:
  virtual ~PrivacyDatabase() = default;

  // Whether the file at `path` can be opened for reading. A system without such a store
  // answers true, since nothing is missing there. Main thread only.
  [[nodiscard]] virtual bool canRead(const std::string& path) const = 0;
};

}  // namespace torvane
