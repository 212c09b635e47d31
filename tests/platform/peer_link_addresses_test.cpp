#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <deque>

#include "platform/linux/own_addresses.h"
#include "support/link_host.h"

namespace torvane {
namespace {

constexpr unsigned kUp = IFF_UP | IFF_RUNNING;
using Texts = std::vector<std::string>;

// A list of networks as the system gives it.
class Networks {
 public:
  Networks& add(const char* name, const char* address, unsigned flags = kUp) {
    sockaddr_storage& storage = addresses_.emplace_back();
    auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
    if (::inet_pton(AF_INET, address, &v4->sin_addr) == 1) {
      storage.ss_family = AF_INET;
    } else if (::inet_pton(AF_INET6, address, &v6->sin6_addr) == 1) {
      storage.ss_family = AF_INET6;
    }
    ifaddrs& entry = entries_.emplace_back();
    entry.ifa_name = const_cast<char*>(name);
    entry.ifa_flags = flags;
    entry.ifa_addr = reinterpret_cast<sockaddr*>(&storage);
    if (entries_.size() > 1) entries_[entries_.size() - 2].ifa_next = &entry;
    return *this;
  }
  Networks& addWithoutAddress(const char* name) {
    add(name, "");
    entries_.back().ifa_addr = nullptr;
    return *this;
  }
  [[nodiscard]] Texts addresses() const { return addressesOf(list(), 48484); }
  [[nodiscard]] Texts hostAddresses() const { return hostAddressesOf(list()); }

 private:
  [[nodiscard]] const ifaddrs* list() const {
    return entries_.empty() ? nullptr : &entries_.front();
  }

  std::deque<ifaddrs> entries_;
  std::deque<sockaddr_storage> addresses_;
};

TEST(OwnAddresses, AreThoseOfNetworksThatAreUp) {
  Networks networks;
  networks.add("lo", "127.0.0.1", kUp | IFF_LOOPBACK)
      .addWithoutAddress("tun0")
      .add("wlan0", "192.0.2.7")
      .add("eth0", "198.51.100.4", IFF_UP)  // its cable is out
      .add("eth1", "203.0.113.9");
  EXPECT_EQ(networks.addresses(), (Texts{"192.0.2.7:48484", "203.0.113.9:48484"}));
}

TEST(OwnAddresses, OfVersion6StandWhereThereIsNoOther) {
  Networks networks;
  networks.add("wlan0", "2001:db8::7")
      .add("eth0", "fe80::1")
      .add("eth0", "2001:db8:1::8")
      .add("eth0", "2001:db8:1::9")
      .add("wlan0", "192.0.2.7");
  EXPECT_EQ(networks.addresses(), (Texts{"192.0.2.7:48484", "[2001:db8:1::8]:48484"}));
}

TEST(OwnAddresses, AreFourAtMost) {
  Networks networks;
  for (int i = 1; i < 9; ++i) networks.add("eth0", ("192.0.2." + std::to_string(i)).c_str());
  EXPECT_EQ(networks.addresses().size(), 4U);
  EXPECT_EQ(networks.addresses().back(), "192.0.2.4:48484");
}

TEST(OwnAddresses, OfNoNetworkAreNone) {
  EXPECT_EQ(Networks().addresses(), Texts());
  EXPECT_EQ(Networks().hostAddresses(), Texts());
}

// A page on this computer may call it by each of them.
TEST(OwnHosts, HaveEveryAddressWithoutItsZone) {
  Networks networks;
  networks.add("lo", "127.0.0.1", kUp | IFF_LOOPBACK)
      .add("lo", "::1", kUp | IFF_LOOPBACK)
      .addWithoutAddress("tun0")
      .add("eth0", "198.51.100.4", IFF_UP)
      .add("wlan0", "fe80::1")
      .add("wlan0", "2001:DB8:0:0::7");
  EXPECT_EQ(networks.hostAddresses(),
            (Texts{"127.0.0.1", "::1", "198.51.100.4", "fe80::1", "2001:db8::7"}));
}

TEST(OwnHosts, AreThoseOfTheSocketAndThisComputer) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size), 0);
  const OwnHosts own = ownHosts(socket);
  ::close(socket);
  EXPECT_EQ(own.port, ntohs(address.sin_port));
  std::array<char, 256> name{};
  ASSERT_EQ(::gethostname(name.data(), name.size() - 1), 0);
  EXPECT_EQ(own.hostName, name.data());
  EXPECT_EQ(std::ranges::count(own.addresses, "127.0.0.1"), 1);
  EXPECT_EQ(ownHosts(-1).port, 0);
}

TEST(OwnAddresses, AreThoseOfThePortWhileTheLinkListens) {
  testing::LinkHost host;
  EXPECT_EQ(host.link->addresses(), Texts());
  const std::uint16_t port = host.start();
  EXPECT_EQ(host.link->addresses(), ownAddresses(port));
  host.advertiser->stop();
  for (int tries = 0; tries < 200 && !host.link->addresses().empty(); ++tries) ::usleep(10'000);
  EXPECT_EQ(host.link->addresses(), Texts());
}

}  // namespace
}  // namespace torvane
