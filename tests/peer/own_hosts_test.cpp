#include "peer/own_hosts.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

OwnHosts desk() {
  return {48484, "Desk", {"127.0.0.1", "::1", "192.168.1.20", "fe80::1c2b", "2001:db8::20"}};
}

TEST(OwnHosts, AreAddressesAndNamesWithThePortOrWithout) {
  for (const char* host :
       {"192.168.1.20", "127.0.0.1", "[::1]", "[2001:db8::20]", "[2001:DB8::20]", "[fe80::1c2b]",
        "localhost", "LOCALHOST", "desk", "Desk", "desk.local", "DESK.LOCAL"}) {
    EXPECT_TRUE(isOwnHost(host, desk())) << host;
    EXPECT_TRUE(isOwnHost(host + std::string(":48484"), desk())) << host;
  }
}

TEST(OwnHosts, AreNoOthers) {
  for (const char* host : {"",
                           "evil.example",
                           "desk.evil.example",
                           "desk.local.evil.example",
                           "desks",
                           "des",
                           "local",
                           ".local",
                           "desk.local.",
                           "192.168.1.21",
                           "192.168.1.2",
                           "0.0.0.0",
                           "[::2]",
                           "[]",
                           "[desk]",
                           "::1",
                           "[192.168.1.20]",
                           "[::1",
                           "desk]",
                           "user@desk",
                           "desk/x",
                           "desk "}) {
    EXPECT_FALSE(isOwnHost(host, desk())) << host;
    EXPECT_FALSE(isOwnHost(host + std::string(":48484"), desk())) << host;
  }
}

TEST(OwnHosts, HaveNoOtherPort) {
  for (const char* host :
       {"desk.local:443", "desk.local:", "desk.local:4848", "desk.local:484840",
        "desk.local:048484", "[::1]:443", "127.0.0.1:8484", ":48484", "desk.local:48484:48484"}) {
    EXPECT_FALSE(isOwnHost(host, desk())) << host;
  }
}

TEST(OwnHosts, OfAComputerThatKnowsItsDomain) {
  const OwnHosts own{48484, "desk.office.example", {}};
  for (const char* host : {"desk.office.example", "desk", "desk.local:48484"}) {
    EXPECT_TRUE(isOwnHost(host, own)) << host;
  }
  EXPECT_FALSE(isOwnHost("office.example", own));
}

TEST(OwnHosts, OfAComputerWithoutAName) {
  const OwnHosts own{48484, "", {"10.0.0.1"}};
  EXPECT_TRUE(isOwnHost("10.0.0.1:48484", own));
  EXPECT_FALSE(isOwnHost("", own));
  EXPECT_FALSE(isOwnHost(".local", own));
}

}  // namespace
}  // namespace torvane
