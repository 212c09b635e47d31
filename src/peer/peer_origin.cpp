#include "peer/peer_origin.h"

#include <algorithm>

namespace torvane {
namespace {

constexpr std::array<std::uint8_t, 12> kMapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
constexpr std::size_t kNetwork = 8;

}  // namespace

std::string peerOrigin(const NetworkAddress& address) {
  const bool isIpv4 = std::equal(kMapped.begin(), kMapped.end(), address.begin());
  return isIpv4 ? std::string(address.begin() + kMapped.size(), address.end())
                : std::string(address.begin(), address.begin() + kNetwork);
}

}  // namespace torvane
