#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace torvane {

// An IPv6 address in network order; an IPv4 address as RFC 4291, section 2.5.5.2, maps it.
using NetworkAddress = std::array<std::uint8_t, 16>;

// Where a peer comes from, as far as limits tell origins apart: equal for equal IPv4 addresses,
// and for IPv6 addresses with the same first 64 bits, as one machine may use all that begin with
// these (RFC 4291, section 2.5.4). Never empty; not for people.
[[nodiscard]] std::string peerOrigin(const NetworkAddress& address);

}  // namespace torvane
