// The digits of a first pairing over real connections: the same on both ends, but not with somebody
// in the middle, and none in version 1.

#include <gtest/gtest.h>

#include "peer/link_proof.h"
#include "protocol/base64.h"
#include "protocol/json.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

const DeviceKeyPair& adasKey() {
  static const auto key = DeviceKeyPair::numbered(1);
  return key;
}

TEST(PeerLinkDigits, AreTheSameOnBothEnds) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  EXPECT_EQ(client.subprotocol(), "torvane.link.2");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited && invited->digits);
  EXPECT_EQ(client.digits(adasKey()), invited->digits);
  EXPECT_EQ(invited->peer.displayName, "iPad");
}

TEST(PeerLinkDigits, AreNewForEveryInvitation) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  std::vector<std::string> digits;
  for (int i = 0; i < 3; ++i) {
    LinkClient client(host.clientOptions());
    ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
    digits.push_back(host.invitations.next()->digits.value_or(""));
  }
  EXPECT_FALSE(digits[0] == digits[1] && digits[1] == digits[2]);
}

TEST(PeerLinkDigits, ComputerOpensWhatItCommittedTo) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect());
  const auto hello = parseJsonObject(client.receive()->text());
  ASSERT_TRUE(hello);
  const auto nonce = base64Decode(stringMember(*hello, "nonce").value_or(""));
  const auto commitment = stringMember(*hello, "commitment");
  ASSERT_TRUE(nonce && nonce->size() == 32 && commitment);
  ASSERT_TRUE(client.sendText(R"({"type":"invite","name":"Old iPad"})"));
  const auto waiting = parseJsonObject(client.receive()->text());
  ASSERT_TRUE(waiting);
  const auto opening = base64Decode(stringMember(*waiting, "opening").value_or(""));
  ASSERT_TRUE(opening);
  Sha256 hash;
  hash.add(*opening);
  EXPECT_EQ(base64Encode(hash.digest()), commitment);
  EXPECT_NE(*opening, *nonce);
}

// What two ends show when a device is paired through a real relay, which is a computer to the
// device and a device of the same name to the computer.
struct Relayed {
  std::optional<std::string> device;
  std::optional<std::string> computer;
};

Relayed pairThroughARelay() {
  LinkHost computer;
  LinkHost relay;  // shows its own certificate
  Relayed shown;
  if (computer.start() == 0 || relay.start() == 0) return shown;
  LinkClient device(relay.clientOptions());
  if (device.invite("Ada's iPad", adasKey()) != "waiting") return shown;
  const auto caught = relay.invitations.next();
  if (!caught) return shown;
  const auto relaysKey = DeviceKeyPair::numbered(66);
  LinkClient onward(computer.clientOptions());
  if (onward.invite(caught->peer.displayName, relaysKey) != "waiting") return shown;
  shown.computer = computer.invitations.next()->digits;
  shown.device = device.digits(adasKey());
  return shown;
}

TEST(PeerLinkDigits, DifferOnTheTwoSidesOfARelay) {
  int same = 0;  // once in a million times it is luck
  for (int i = 0; i < 2; ++i) {
    const Relayed shown = pairThroughARelay();
    ASSERT_TRUE(shown.device && shown.computer);
    EXPECT_EQ(shown.device->size(), 7U);
    same += shown.device == shown.computer ? 1 : 0;
  }
  EXPECT_LT(same, 2);
}

// The relay knows the digits of the device before it invites.
TEST(PeerLinkDigits, CannotBeBroughtAlongInTheName) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  for (const char* version : {"torvane.link.1", "torvane.link.2"}) {
    auto options = host.clientOptions();
    options.subprotocol = version;
    LinkClient client(options);
    ASSERT_EQ(client.invite("Ada's iPad · 482 913", adasKey()), "waiting");
    EXPECT_EQ(host.invitations.next()->peer.displayName, "Ada's iPad · ### ###");
  }
}

TEST(PeerLinkDigits, ThereAreNoneInVersion1) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.subprotocol = "torvane.link.1";
  LinkClient client(options);
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  EXPECT_EQ(client.subprotocol(), "torvane.link.1");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  EXPECT_FALSE(invited->digits);
  EXPECT_FALSE(client.digits(adasKey()));
  invited->handler(true, host.session);
  EXPECT_EQ(client.outcome(), "accepted");
}

TEST(PeerLinkDigits, Version1IsSaidAsItAlwaysWas) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.subprotocol = "torvane.link.1";
  LinkClient client(options);
  ASSERT_TRUE(client.connect());
  const auto hello = parseJsonObject(client.receive()->text());
  ASSERT_TRUE(hello);
  EXPECT_EQ(integerMember(*hello, "version"), 1);
  EXPECT_EQ(hello->size(), 4U);
  ASSERT_TRUE(client.sendText(R"({"type":"invite","name":"Old iPad"})"));
  EXPECT_EQ(client.receive()->text(), R"({"type":"waiting"})");
}

TEST(PeerLinkDigits, NewestVersionThatIsOfferedIsChosen) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  for (const char* offered : {"torvane.link.1, torvane.link.2", "torvane.link.2,torvane.link.1",
                              "torvane.link.3, torvane.link.2"}) {
    auto options = host.clientOptions();
    options.subprotocol = offered;
    LinkClient client(options);
    ASSERT_TRUE(client.connect()) << offered;
    EXPECT_EQ(client.subprotocol(), "torvane.link.2") << offered;
    ASSERT_TRUE(client.receiveHello()) << offered;
  }
  auto options = host.clientOptions();
  options.subprotocol = "torvane.link.3";
  LinkClient unknown(options);
  EXPECT_FALSE(unknown.connect());
  EXPECT_EQ(unknown.httpStatus(), 400U);
}

TEST(PeerLinkHosts, PagesMayUseTheNamesOfThisComputer) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  const std::string port = ":" + std::to_string(host.address.port);
  const auto statusOf = [&](const std::string& name, bool isPage) {
    auto options = host.clientOptions();
    options.httpHost = name;
    if (isPage) options.origin = "https://" + name;
    LinkClient client(options);
    return client.connect() ? 101U : client.httpStatus();
  };
  for (const std::string name : {"localhost", "127.0.0.1", "[::1]"}) {
    EXPECT_EQ(statusOf(name + port, true), 101U) << name;
  }
  EXPECT_EQ(statusOf("rebound.example" + port, true), 403U);
  EXPECT_EQ(statusOf("localhost:1", true), 403U);
  EXPECT_EQ(statusOf("desk.lan" + port, false), 101U);
}

}  // namespace
}  // namespace torvane
