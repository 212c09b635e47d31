#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "ports/geometry.h"
#include "protocol/json.h"

namespace torvane::ipad {

using Strokes = std::vector<std::vector<Point>>;

// What a file of strokes holds.
struct StrokeFile {
  Strokes strokes;
  std::size_t wrongLine = 0;  // the first one that cannot be read, from 1; 0: none
};

// A point per line: X and Y, apart by blanks, a comma or both. A line without anything ends a
// stroke. What follows a # is a comment; a line with nothing else is passed over.
[[nodiscard]] StrokeFile parseStrokes(std::string_view text);

// The ink events that draw these strokes, with ids counted from `firstId`.
[[nodiscard]] JsonArray strokeEvents(const Strokes& strokes, std::int64_t firstId);

// Parts of a list, in order and of about the same size: `parts` of them where no part gets larger
// than `most` by that, and where there is enough to share out.
[[nodiscard]] std::vector<JsonArray> sharedOut(const JsonArray& events, std::size_t parts,
                                               std::size_t most);

}  // namespace torvane::ipad
