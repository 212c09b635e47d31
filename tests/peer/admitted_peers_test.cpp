#include "peer/admitted_peers.h"

#include <gtest/gtest.h>

#include "support/signing_device.h"

namespace torvane {
namespace {

class Admission : public testing::Test {
 protected:
  const test::SigningDevice device{1};
  const PeerID peer{1, "iPad"};
  const PeerID other{2, "Other"};
  AdmittedPeers peers;

  void SetUp() override { peers.admit(peer, device.publicKey()); }

  bool isVerified(const PeerID& from, const Bytes& envelope, double now = 0) {
    return peers.verify(P2PFrame::decodeView(envelope).value(), from, now).has_value();
  }
  Bytes request(std::int64_t id, const std::string& challenge) {
    return device.envelope(challenge, {{"id", id}, {"path", "/x"}});
  }
};

TEST_F(Admission, HoldsUntilThePeerDrops) {
  EXPECT_TRUE(peers.contains(peer));
  EXPECT_FALSE(peers.contains(other));
  EXPECT_FALSE(peers.isEmpty());
  peers.drop(peer);
  EXPECT_FALSE(peers.contains(peer));
  EXPECT_TRUE(peers.isEmpty());
}

TEST_F(Admission, GivesEachPeerOneChallengeAndOthersNone) {
  const auto challenge = peers.issueChallenge(peer);
  ASSERT_TRUE(challenge.has_value());
  EXPECT_EQ(peers.issueChallenge(peer), challenge);
  EXPECT_EQ(peers.issueChallenge(other), std::nullopt);
  peers.admit(other, device.publicKey());
  EXPECT_NE(peers.issueChallenge(other), challenge);
}

TEST_F(Admission, TakesEachRequestOnce) {
  const auto challenge = peers.issueChallenge(peer).value();
  EXPECT_TRUE(isVerified(peer, request(1, challenge)));
  EXPECT_FALSE(isVerified(peer, request(1, challenge)));
  EXPECT_TRUE(isVerified(peer, request(2, challenge)));
}

TEST_F(Admission, TakesNoneBeforeAChallengeIsIssued) {
  EXPECT_FALSE(isVerified(peer, request(1, "")));
}

TEST_F(Admission, KeepsItsChallengeUnderAnotherKeyAndLosesItWithTheConnection) {
  const test::SigningDevice second{2};
  const auto challenge = peers.issueChallenge(peer).value();
  peers.admit(peer, second.publicKey());
  EXPECT_EQ(peers.issueChallenge(peer), challenge);
  EXPECT_FALSE(isVerified(peer, request(1, challenge)));
  EXPECT_TRUE(isVerified(peer, second.envelope(challenge, {{"id", 1}, {"path", "/x"}})));
  peers.drop(peer);
  peers.admit(peer, second.publicKey());
  EXPECT_NE(peers.issueChallenge(peer), challenge);
}

TEST_F(Admission, LooksAtNoMoreThanSoManyRequestsThatDoNotVerify) {
  const auto challenge = peers.issueChallenge(peer).value();
  const Bytes forged = request(1, "another challenge");
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(isVerified(peer, forged));
  EXPECT_FALSE(isVerified(peer, request(2, challenge)));
  EXPECT_TRUE(isVerified(peer, request(2, challenge), 0.06)) << "20 a second are looked at";
}

}  // namespace
}  // namespace torvane
