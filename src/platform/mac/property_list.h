#pragma once

#import <Foundation/Foundation.h>

#include <optional>

#include "protocol/json.h"

namespace torvane {

// A property-list value as JSON; none for what JSON has no word for, such as dates and data,
// wherever it stands.
[[nodiscard]] std::optional<JsonValue> fromPropertyList(id value);

// Null stands for nothing: it becomes nil, and is left out of arrays and dictionaries.
[[nodiscard]] id toPropertyList(const JsonValue& value);

}  // namespace torvane
