#pragma once

#include <cstdint>
#include <map>

namespace torvane {

// A set of integers kept as runs of neighbours, so that a device that counts its requests up
// costs the same after ten million of them as after one.
class ReceivedIDs {
 public:
  // False when the id was in the set already.
  bool insert(std::int64_t id);

  [[nodiscard]] bool contains(std::int64_t id) const;
  [[nodiscard]] bool empty() const { return runs_.empty(); }

  // How many runs of neighbouring ids the set is kept as.
  [[nodiscard]] std::size_t runCount() const { return runs_.size(); }

 private:
  std::map<std::int64_t, std::int64_t> runs_;  // first id → last id of each run
};

}  // namespace torvane
