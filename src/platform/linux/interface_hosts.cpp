#include "platform/linux/interface_hosts.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>

namespace torvane {
namespace {

// Empty for what is no IP address. A zone ("%eth0") is cut off: it is no part of a Host header.
std::string addressText(const sockaddr* address) {
  if (address == nullptr) return {};
  socklen_t size = 0;
  if (address->sa_family == AF_INET) size = sizeof(sockaddr_in);
  if (address->sa_family == AF_INET6) size = sizeof(sockaddr_in6);
  std::array<char, NI_MAXHOST> text{};
  if (size == 0 ||
      ::getnameinfo(address, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0) {
    return {};
  }
  const std::string whole = text.data();
  return whole.substr(0, whole.find('%'));
}

// The port is at the same place in the addresses of both versions of IP (RFC 3493, section 3.3).
std::uint16_t portOf(int socket) {
  sockaddr_in6 address{};
  socklen_t size = sizeof address;
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohs(address.sin6_port);
}

std::string hostName() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

}  // namespace

OwnHosts ownHosts(int socket) {
  OwnHosts own{portOf(socket), hostName(), {}};
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return own;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    auto text = addressText(entry->ifa_addr);
    if (!text.empty()) own.addresses.push_back(std::move(text));
  }
  return own;
}

}  // namespace torvane
