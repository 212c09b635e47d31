#include "platform/linux/own_addresses.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <set>

namespace torvane {
namespace {

constexpr std::size_t kMostAddresses = 4;

struct InterfaceAddress {
  std::string interface;
  std::string text;  // in the form of RFC 5952
  bool isVersion6 = false;
  bool isForOthers = false;  // of a network that is up, and no address of its link alone
};

template <typename Address>
Address as(const sockaddr* address) {
  Address result{};
  std::memcpy(&result, address, sizeof result);
  return result;
}

std::string text(int family, const void* address) {
  std::array<char, INET6_ADDRSTRLEN> written{};
  const char* read = ::inet_ntop(family, address, written.data(), written.size());
  return read != nullptr ? read : "";
}

bool isOfANetwork(const ifaddrs& entry) {
  constexpr unsigned kUp = IFF_UP | IFF_RUNNING;
  return (entry.ifa_flags & kUp) == kUp && (entry.ifa_flags & IFF_LOOPBACK) == 0;
}

std::vector<InterfaceAddress> interfaceAddresses(const ifaddrs* list) {
  std::vector<InterfaceAddress> found;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr) continue;
    const int family = entry->ifa_addr->sa_family;
    if (family == AF_INET) {
      const auto address = as<sockaddr_in>(entry->ifa_addr);
      found.push_back(
          {entry->ifa_name, text(family, &address.sin_addr), false, isOfANetwork(*entry)});
    } else if (family == AF_INET6) {
      const auto address = as<sockaddr_in6>(entry->ifa_addr);
      const bool isOfItsLink = IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr);
      found.push_back({entry->ifa_name, text(family, &address.sin6_addr), true,
                       isOfANetwork(*entry) && !isOfItsLink});
    }
  }
  return found;
}

// Of this computer now; null where the system does not tell.
std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> interfaceList() {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) list = nullptr;
  return {list, &::freeifaddrs};
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

std::vector<std::string> addressesOf(const ifaddrs* list, std::uint16_t port) {
  const std::string suffix = ":" + std::to_string(port);
  const auto all = interfaceAddresses(list);
  std::vector<std::string> found;
  std::set<std::string> interfaces;
  for (const InterfaceAddress& address : all) {
    if (address.isVersion6 || !address.isForOthers) continue;
    found.push_back(address.text + suffix);
    interfaces.insert(address.interface);
  }
  for (const InterfaceAddress& address : all) {
    if (!address.isVersion6 || !address.isForOthers) continue;
    if (!interfaces.insert(address.interface).second) continue;
    found.push_back("[" + address.text + "]" + suffix);
  }
  found.resize(std::min(found.size(), kMostAddresses));
  return found;
}

std::vector<std::string> hostAddressesOf(const ifaddrs* list) {
  std::vector<std::string> found;
  for (InterfaceAddress& address : interfaceAddresses(list)) {
    found.push_back(std::move(address.text));
  }
  return found;
}

std::vector<std::string> ownAddresses(std::uint16_t port) {
  return addressesOf(interfaceList().get(), port);
}

OwnHosts ownHosts(int socket) {
  return {portOf(socket), hostName(), hostAddressesOf(interfaceList().get())};
}

}  // namespace torvane
