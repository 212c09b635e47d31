#include "fakes/bridge_test.h"

namespace torvane {
namespace {

class HandshakeRoutes : public BridgeTest {
 protected:
  std::optional<std::string> versionTold() {
    request({{"id", 77}, {"path", "/p2p/bridge-info"}});
    const auto reply = repliesTo(peer).back();
    if (integerMember(reply.header, "id") != 77) return std::nullopt;
    return stringMember(parseJsonObject(asText(reply.body)).value(), "version");
  }
};

TEST_F(HandshakeRoutes, ChallengeIsAVersion4UUIDInUpperCase) {
  receive(peer, test::challengeRequest(12));
  const auto reply = repliesTo(peer).back();
  const JsonObject expected = {{"id", 12}, {"status", 200}, {"contentType", "application/json"}};
  EXPECT_EQ(reply.header, expected);
  const auto body = parseJsonObject(asText(reply.body)).value();
  EXPECT_EQ(body.size(), 1U);
  const auto challenge = stringMember(body, "challenge").value();
  ASSERT_EQ(challenge.size(), 36U);
  EXPECT_EQ(challenge.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
  EXPECT_EQ(challenge[14], '4');
}

TEST_F(HandshakeRoutes, ChallengeIsTheSameForTheWholeConnection) {
  const auto challenge = challengeOf(peer);
  EXPECT_EQ(challengeOf(peer), challenge);
}

TEST_F(HandshakeRoutes, NextConnectionGetsANewChallenge) {
  const auto challenge = challengeOf(peer);
  disconnect(peer);
  EXPECT_NE(challengeOf(admit(device, "iPad")), challenge);
}

TEST_F(HandshakeRoutes, TwoPeersGetDifferentChallenges) {
  const test::SigningDevice other(2);
  EXPECT_NE(challengeOf(peer), challengeOf(admit(other, "Other")));
}

TEST_F(HandshakeRoutes, ChallengeRequestWithoutAnIntegerIdGetsNone) {
  receive(peer, test::frameOf({{"path", "/p2p/auth"}}));
  receive(peer, test::frameOf({{"path", "/p2p/auth"}, {"id", "1"}}));
  EXPECT_EQ(replyCount(), 0U);
  receive(peer, device.envelope("", {{"id", 1}, {"path", "/p2p/bridge-info"}}));
  EXPECT_EQ(replyCount(), 0U) << "none was issued";
}

TEST_F(HandshakeRoutes, BridgeInfoTellsTheBuild) {
  EXPECT_EQ(versionTold(), "412");
  EXPECT_TRUE(forwarded().empty());
}

TEST_F(HandshakeRoutes, BridgeInfoWithoutABuildIsZero) {
  platform.bundle.info.clear();
  EXPECT_EQ(versionTold(), "0");
}

TEST_F(HandshakeRoutes, BridgeInfoWithABuildThatIsNotTextIsZero) {
  platform.bundle.info["CFBundleVersion"] = 412;
  EXPECT_EQ(versionTold(), "0");
}

TEST_F(HandshakeRoutes, UnsignedBridgeInfoGetsNoAnswer) {
  challengeOf(peer);
  const auto before = replyCount();
  receive(peer, test::frameOf({{"id", 1}, {"path", "/p2p/bridge-info"}}));
  EXPECT_EQ(replyCount(), before);
}

TEST_F(HandshakeRoutes, BridgeInfoOverAStaleChallengeGetsNoAnswer) {
  const auto stale = challengeOf(peer);
  disconnect(peer);
  const auto again = admit(device, "iPad");
  challengeOf(again);
  const auto before = replyCount();
  receive(again, device.envelope(stale, {{"id", 1}, {"path", "/p2p/bridge-info"}}));
  EXPECT_EQ(replyCount(), before);
}

TEST_F(HandshakeRoutes, BridgeInfoWithAQueryGoesToTheEngine) {
  request({{"id", 1}, {"path", "/p2p/bridge-info?x"}});
  EXPECT_EQ(forwarded().size(), 1U);
}

}  // namespace
}  // namespace torvane
