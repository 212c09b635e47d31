#pragma once

#include <ifaddrs.h>

#include <cstdint>
#include <string>
#include <vector>

#include "peer/own_hosts.h"

namespace torvane {

// Where other computers reach this port of this one now, to be read and typed in:
// "192.0.2.7:48484", "[2001:db8::7]:48484". Any thread.
[[nodiscard]] std::vector<std::string> ownAddresses(std::uint16_t port);

// The port of this socket, the addresses of this computer's network interfaces as they are now, and
// its host name. What cannot be had is left out. Any thread.
[[nodiscard]] OwnHosts ownHosts(int socket);

// ownAddresses() of a list as getifaddrs(3) gives it. Networks that are up, other than this
// computer's own; of each its addresses of IP version 4, or one of version 6 where it has none of
// those. Those that mean nothing on another computer are left out (RFC 4291, section 2.5.6). At
// most four.
[[nodiscard]] std::vector<std::string> addressesOf(const ifaddrs* list, std::uint16_t port);

// The addresses of ownHosts() of such a list: every one, without its zone ("%eth0"), which is no
// part of a Host header.
[[nodiscard]] std::vector<std::string> hostAddressesOf(const ifaddrs* list);

}  // namespace torvane
