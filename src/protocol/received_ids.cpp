#include "protocol/received_ids.h"

#include <iterator>
#include <limits>

namespace torvane {

bool ReceivedIDs::contains(std::int64_t id) const {
  const auto after = runs_.upper_bound(id);
  return after != runs_.begin() && std::prev(after)->second >= id;
}

bool ReceivedIDs::insert(std::int64_t id) {
  auto after = runs_.upper_bound(id);
  const auto before = after == runs_.begin() ? runs_.end() : std::prev(after);
  if (before != runs_.end() && before->second >= id) return false;

  // The neighbour below never ends at the largest integer here, nor does the one above begin at
  // the smallest, so neither sum overflows.
  const bool joinsBefore = before != runs_.end() && before->second + 1 == id;
  const bool joinsAfter = after != runs_.end() && after->first - 1 == id;
  const std::int64_t last = joinsAfter ? after->second : id;
  if (joinsAfter) after = runs_.erase(after);
  if (joinsBefore) {
    before->second = last;
  } else {
    runs_.emplace_hint(after, id, last);
  }
  return true;
}

}  // namespace torvane
