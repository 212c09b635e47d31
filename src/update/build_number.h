#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace torvane {

// A text without the white space and line breaks, Unicode's included, at its ends.
[[nodiscard]] std::string_view trimmedText(std::string_view text);

// The build number that a version file names: fewer than 32 characters, each of them a number, with
// white space and line breaks around them. None for anything else.
[[nodiscard]] std::optional<std::string> parseBuildNumber(ByteView versionFile);

// Numeric comparison: runs of decimal digits by their value, whatever their length; all other
// characters by their code.
[[nodiscard]] std::weak_ordering compareBuilds(std::string_view left, std::string_view right);

}  // namespace torvane
