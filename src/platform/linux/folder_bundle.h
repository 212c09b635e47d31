#pragma once

#include <optional>
#include <string>

#include "ports/bundle.h"

namespace torvane {

// An application folder:
//   bin/        the program
//   Resources/  the files it ships with
//   Info.json   the information dictionary
class FolderBundle final : public Bundle {
 public:
  // `path`: absolute, without a trailing slash.
  explicit FolderBundle(std::string path);

  [[nodiscard]] std::string path() const override { return path_; }
  [[nodiscard]] std::optional<std::string> executablePath() const override;
  [[nodiscard]] std::optional<std::string> pathForResource(const std::string& name,
                                                           const std::string& type) const override;
  [[nodiscard]] std::optional<JsonValue> infoValue(const std::string& key) const override;

 private:
  std::string path_;
  JsonObject info_;  // as it was at start: an update replaces the folder under a running program
};

// The application folder that a program, given by its absolute path, belongs to.
[[nodiscard]] std::string bundlePathOfProgram(const std::string& program);

// The folder of the program that runs now.
[[nodiscard]] std::string mainBundlePath();

}  // namespace torvane
