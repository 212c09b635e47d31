#include "platform/linux/own_addresses.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <set>

namespace torvane {
namespace {

constexpr std::size_t kMostAddresses = 4;

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

bool isOfANetwork(const ifaddrs& entry, int family) {
  constexpr unsigned kUp = IFF_UP | IFF_RUNNING;
  return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == family &&
         (entry.ifa_flags & kUp) == kUp && (entry.ifa_flags & IFF_LOOPBACK) == 0;
}

}  // namespace

std::vector<std::string> addressesOf(const ifaddrs* list, std::uint16_t port) {
  const std::string suffix = ":" + std::to_string(port);
  std::vector<std::string> found;
  std::set<std::string> interfaces;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (!isOfANetwork(*entry, AF_INET)) continue;
    const auto address = as<sockaddr_in>(entry->ifa_addr);
    found.push_back(text(AF_INET, &address.sin_addr) + suffix);
    interfaces.insert(entry->ifa_name);
  }
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (!isOfANetwork(*entry, AF_INET6)) continue;
    const auto address = as<sockaddr_in6>(entry->ifa_addr);
    if (IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr)) continue;
    if (!interfaces.insert(entry->ifa_name).second) continue;
    found.push_back("[" + text(AF_INET6, &address.sin6_addr) + "]" + suffix);
  }
  found.resize(std::min(found.size(), kMostAddresses));
  return found;
}

std::vector<std::string> ownAddresses(std::uint16_t port) {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return {};
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> kept(list, ::freeifaddrs);
  return addressesOf(list, port);
}

}  // namespace torvane
