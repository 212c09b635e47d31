#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ink/ink_events.h"
#include "protocol/bytes.h"

namespace torvane {

// What the engine answers to the question for new ink.
struct InkAnswer {
  std::int64_t seq = 0;  // number of the last event
  std::vector<InkEvent> events = {};
  bool presenting = false;    // whether a slide show runs
  double aspect = 0.5625;     // slide height / slide width
  std::int64_t overlayV = 0;  // version of the overlay picture

  bool operator==(const InkAnswer&) const = default;
};

// Reads the body of an answer; none unless it is an object with an integer "seq". Any other member
// that is missing or of another type gets the default above. An event that is malformed or of an
// unknown kind is left out as a whole; deletions that follow each other are joined into one. May
// take long for a large body: meant for a background thread.
[[nodiscard]] std::optional<InkAnswer> parseInkAnswer(ByteView body);

}  // namespace torvane
