#include "peer/own_hosts.h"

#include <algorithm>

namespace torvane {
namespace {

char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSame(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

// The host without the port; empty when the port is another one.
std::string_view withoutPort(std::string_view host, std::uint16_t port) {
  const auto colon = host.rfind(':');
  const bool hasPort = colon != host.npos && host.find(']', colon) == host.npos;
  if (!hasPort) return host;
  return host.substr(colon + 1) == std::to_string(port) ? host.substr(0, colon)
                                                        : std::string_view{};
}

bool isOwnName(std::string_view name, std::string_view hostName) {
  if (isSame(name, "localhost")) return true;
  const std::string label(hostName.substr(0, hostName.find('.')));
  return !label.empty() &&
         (isSame(name, hostName) || isSame(name, label) || isSame(name, label + ".local"));
}

}  // namespace

bool isOwnHost(std::string_view host, const OwnHosts& own) {
  std::string_view name = withoutPort(host, own.port);
  const bool isIpv6 = name.starts_with('[') && name.ends_with(']');
  if (isIpv6) name = name.substr(1, name.size() - 2);
  const auto isMeant = [&](const std::string& address) {
    return isSame(address, name) && (address.find(':') != address.npos) == isIpv6;
  };
  return std::ranges::any_of(own.addresses, isMeant) || (!isIpv6 && isOwnName(name, own.hostName));
}

}  // namespace torvane
