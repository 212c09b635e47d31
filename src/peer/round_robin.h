#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace torvane {

// Waiting items in lanes. Each lane keeps its order, and the lanes take turns, so that one with a
// hundred thousand items holds up no other by more than one.
template <typename Item>
class RoundRobin {
 public:
  using Lane = std::uint64_t;

  void put(Lane lane, Item item) { lanes_[lane].push_back(std::move(item)); }

  [[nodiscard]] bool empty() const { return lanes_.empty(); }

  // Whether a lane that `isAllowed` has anything.
  template <typename Predicate>
  [[nodiscard]] bool has(Predicate isAllowed) const {
    return std::ranges::any_of(lanes_, [&](const auto& lane) { return isAllowed(lane.first); });
  }

  // The first item of the next lane that `isAllowed`; none where there is no such lane.
  template <typename Predicate>
  [[nodiscard]] std::optional<Item> take(Predicate isAllowed) {
    auto lane = lanes_.upper_bound(last_);
    for (std::size_t i = 0; i < lanes_.size(); ++i, ++lane) {
      if (lane == lanes_.end()) lane = lanes_.begin();
      if (isAllowed(lane->first)) return takeFrom(lane);
    }
    return std::nullopt;
  }
  [[nodiscard]] std::optional<Item> take() {
    return take([](Lane) { return true; });
  }

  // Removes every item that is `wanted`, lane by lane.
  template <typename Predicate>
  [[nodiscard]] std::vector<Item> takeAll(Predicate wanted) {
    std::vector<Item> taken;
    for (auto& [lane, items] : lanes_) {
      const auto kept = std::stable_partition(items.begin(), items.end(), wanted);
      std::move(items.begin(), kept, std::back_inserter(taken));
      items.erase(items.begin(), kept);
    }
    std::erase_if(lanes_, [](const auto& lane) { return lane.second.empty(); });
    return taken;
  }

 private:
  using Lanes = std::map<Lane, std::deque<Item>>;

  [[nodiscard]] Item takeFrom(typename Lanes::iterator lane) {
    last_ = lane->first;
    Item item = std::move(lane->second.front());
    lane->second.pop_front();
    if (lane->second.empty()) lanes_.erase(lane);
    return item;
  }

  Lanes lanes_;  // none is empty
  Lane last_ = 0;
};

}  // namespace torvane
