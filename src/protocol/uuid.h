#pragma once

#include <string>

namespace torvane {

// A fresh random UUID, version 4 (RFC 4122), as 36 characters with upper-case digits.
[[nodiscard]] std::string randomUUID();

}  // namespace torvane
