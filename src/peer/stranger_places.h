#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace torvane {

// The connections that have not said who they are yet. A newcomer always gets a place: when there
// are too many, the oldest one goes of the origin that has most. So an origin that fills the places
// loses its own, and one that has a single connection keeps it for as long as others have more.
class StrangerPlaces {
 public:
  explicit StrangerPlaces(std::size_t most) : most_(most) {}

  // The connection that has to go for this one; it has left already.
  [[nodiscard]] std::optional<std::uint64_t> enter(std::uint64_t token, const std::string& origin);
  void leave(std::uint64_t token);

 private:
  struct Stranger {
    std::uint64_t token;
    std::string origin;
  };

  [[nodiscard]] std::size_t countOf(const std::string& origin) const;

  std::size_t most_;
  std::vector<Stranger> strangers_;  // oldest first
};

}  // namespace torvane
