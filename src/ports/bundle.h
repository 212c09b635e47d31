#pragma once

#include <optional>
#include <string>

#include "protocol/json.h"

namespace torvane {

// The application folder this process runs from. Main thread only.
class Bundle {
 public:
  virtual ~Bundle() = default;

  // Absolute path of the application folder, without a trailing slash.
  [[nodiscard]] virtual std::string path() const = 0;

  // Absolute path of the program's file; none when the bundle names none.
  [[nodiscard]] virtual std::optional<std::string> executablePath() const = 0;

  // Absolute path of the file `name`.`type` in the resources folder; none when it is not there.
  [[nodiscard]] virtual std::optional<std::string> pathForResource(
      const std::string& name, const std::string& type) const = 0;

  // A value of the information dictionary; none when the key is absent.
  [[nodiscard]] virtual std::optional<JsonValue> infoValue(const std::string& key) const = 0;
};

// The build of the copy that runs, "0" where none is named.
[[nodiscard]] std::string buildOf(const Bundle& bundle);

// None when none is named.
[[nodiscard]] std::optional<std::string> identifierOf(const Bundle& bundle);

}  // namespace torvane
