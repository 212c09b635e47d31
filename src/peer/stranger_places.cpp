#include "peer/stranger_places.h"

#include <algorithm>

namespace torvane {

std::optional<std::uint64_t> StrangerPlaces::enter(std::uint64_t token, const std::string& origin) {
  strangers_.push_back({token, origin});
  if (strangers_.size() <= most_) return std::nullopt;
  // The first of several that compare equal, which is the oldest.
  const auto leaving = std::max_element(strangers_.begin(), strangers_.end(),
                                        [this](const Stranger& one, const Stranger& other) {
                                          return countOf(one.origin) < countOf(other.origin);
                                        });
  const std::uint64_t gone = leaving->token;
  strangers_.erase(leaving);
  return gone;
}

void StrangerPlaces::leave(std::uint64_t token) {
  std::erase_if(strangers_, [token](const Stranger& stranger) { return stranger.token == token; });
}

std::size_t StrangerPlaces::countOf(const std::string& origin) const {
  const auto isOfOrigin = [&origin](const Stranger& stranger) { return stranger.origin == origin; };
  return static_cast<std::size_t>(std::count_if(strangers_.begin(), strangers_.end(), isOfOrigin));
}

}  // namespace torvane
