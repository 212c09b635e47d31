#include "peer/peer_origin.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

NetworkAddress ipv6(std::uint8_t network, std::uint8_t host) {
  NetworkAddress address{0x20, 0x01, 0x0D, 0xB8};
  address[7] = network;
  address[15] = host;
  return address;
}

NetworkAddress ipv4(std::uint8_t last) {
  return {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 192, 0, 2, last};
}

TEST(PeerOrigin, IsTheFirstHalfOfAnIpv6Address) {
  EXPECT_EQ(peerOrigin(ipv6(1, 1)), peerOrigin(ipv6(1, 2)));
  EXPECT_NE(peerOrigin(ipv6(1, 1)), peerOrigin(ipv6(2, 1)));
}

TEST(PeerOrigin, IsAWholeIpv4Address) {
  EXPECT_EQ(peerOrigin(ipv4(1)), peerOrigin(ipv4(1)));
  EXPECT_NE(peerOrigin(ipv4(1)), peerOrigin(ipv4(2)));
}

TEST(PeerOrigin, OfIpv6IsNeverThatOfIpv4) {
  const NetworkAddress none{};
  NetworkAddress loopback{};
  loopback[15] = 1;
  EXPECT_EQ(peerOrigin(none), peerOrigin(loopback));
  EXPECT_NE(peerOrigin(loopback), peerOrigin(ipv4(0)));
  NetworkAddress nearlyMapped = ipv4(1);
  nearlyMapped[9] = 1;
  EXPECT_EQ(peerOrigin(nearlyMapped), peerOrigin(none));
}

}  // namespace
}  // namespace torvane
