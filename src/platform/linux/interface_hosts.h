#pragma once

#include "peer/own_hosts.h"

namespace torvane {

// The port of this socket, the addresses of this computer's network interfaces as they are now, and
// its host name. What cannot be had is left out.
[[nodiscard]] OwnHosts ownHosts(int socket);

}  // namespace torvane
