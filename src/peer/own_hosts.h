#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace torvane {

// What a server on this computer is reached by.
struct OwnHosts {
  std::uint16_t port = 0;
  std::string hostName;
  std::vector<std::string> addresses;  // as text, in the form of RFC 5952, without zones
};

// Whether a page may name this computer so: whether a "Host" header (RFC 9110, section 7.2) is one
// of its addresses, its name, its name in ".local" (RFC 6762) or "localhost", with its port or
// without one. A page of another site that has its own name point here (DNS rebinding) does not
// get past this.
[[nodiscard]] bool isOwnHost(std::string_view host, const OwnHosts& own);

}  // namespace torvane
