#include "torvane_ipad/signed_requests.h"

#include <gtest/gtest.h>

#include "protocol/p2p_authentication.h"

namespace torvane::ipad {
namespace {

constexpr const char* kChallenge = "0F8FAD5B-D9CB-469F-A165-70867728950E";

class SignedRequestsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const Reply reply{1, 200, "application/json", std::nullopt,
                      toBytes(std::string(R"({"challenge":")") + kChallenge + "\"}")};
    ASSERT_TRUE(requests_.acceptChallenge(reply));
  }

  // What the helper makes of a frame.
  std::optional<P2PFrame::Frame> verified(const Bytes& frame) {
    return P2PAuthentication::verify(frame, *SigningPublicKey::fromRaw(identity_.publicKey()),
                                     kChallenge, receivedIDs_);
  }

  DeviceIdentity identity_{DeviceIdentity::Seed{9}};
  SignedRequests requests_{identity_};
  ReceivedIDs receivedIDs_;
};

TEST_F(SignedRequestsTest, HelperAcceptsASignedRequest) {
  const auto outgoing = requests_.sign({"/api/goto", "POST", "application/json", toBytes("{}")});
  ASSERT_TRUE(outgoing);
  const auto inner = verified(outgoing->frame);
  ASSERT_TRUE(inner);
  EXPECT_EQ(integerMember(inner->header, "id"), outgoing->id);
  EXPECT_EQ(stringMember(inner->header, "path"), "/api/goto");
  EXPECT_EQ(stringMember(inner->header, "method"), "POST");
  EXPECT_EQ(stringMember(inner->header, "contentType"), "application/json");
  EXPECT_EQ(asText(inner->body), "{}");
}

TEST_F(SignedRequestsTest, EveryRequestHasAnIdOfItsOwn) {
  for (int i = 0; i < 100; ++i) {
    const auto outgoing = requests_.sign({.path = "/"});
    ASSERT_TRUE(outgoing);
    EXPECT_TRUE(verified(outgoing->frame));
  }
}

TEST_F(SignedRequestsTest, HelperRefusesTheSameFrameTwice) {
  const auto outgoing = requests_.sign({.path = "/"});
  EXPECT_TRUE(verified(outgoing->frame));
  EXPECT_FALSE(verified(outgoing->frame));
}

TEST_F(SignedRequestsTest, HelperRefusesAnotherDevicesSignature) {
  SignedRequests stranger(DeviceIdentity(DeviceIdentity::Seed{10}));
  EXPECT_FALSE(verified(stranger.sign({.path = "/"})->frame));
}

TEST_F(SignedRequestsTest, AsksForTheChallengeUnsigned) {
  const auto outgoing = requests_.makeChallengeRequest();
  const auto frame = P2PFrame::decode(outgoing.frame);
  ASSERT_TRUE(frame);
  EXPECT_EQ(stringMember(frame->header, "path"), "/p2p/auth");
  EXPECT_EQ(integerMember(frame->header, "id"), outgoing.id);
}

TEST_F(SignedRequestsTest, SignsNothingThatIsNotUtf8) {
  EXPECT_FALSE(requests_.sign({.path = "/\xff"}));
}

TEST(SignedRequests, AcceptsNoChallengeFromAnErrorOrNonsense) {
  SignedRequests requests(DeviceIdentity(DeviceIdentity::Seed{}));
  const auto accepts = [&](std::int64_t status, std::string_view body) {
    return requests.acceptChallenge({1, status, "application/json", std::nullopt, toBytes(body)});
  };
  EXPECT_FALSE(accepts(502, R"({"challenge":"x"})"));
  EXPECT_FALSE(accepts(200, R"({"challenge":1})"));
  EXPECT_FALSE(accepts(200, ""));
}

TEST(ParseReply, ReadsAllOfAReply) {
  const auto frame = P2PFrame::encode(
      {{"id", 3}, {"status", 502}, {"contentType", "text/plain"}, {"error", "gone"}},
      asBytes("body"));
  const auto reply = parseReply(*frame);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->id, 3);
  EXPECT_EQ(reply->status, 502);
  EXPECT_EQ(reply->contentType, "text/plain");
  EXPECT_EQ(reply->error, "gone");
  EXPECT_EQ(asText(reply->body), "body");
}

TEST(ParseReply, RefusesWhatIsNoReply) {
  const auto refuses = [](const JsonObject& header) {
    return !parseReply(*P2PFrame::encode(header, {}));
  };
  EXPECT_TRUE(refuses({{"status", 200}, {"contentType", "x"}}));
  EXPECT_TRUE(refuses({{"id", 1}, {"contentType", "x"}}));
  EXPECT_TRUE(refuses({{"id", 1}, {"status", 200}}));
  EXPECT_TRUE(refuses({{"id", "1"}, {"status", 200}, {"contentType", "x"}}));
  EXPECT_FALSE(parseReply(toBytes("nonsense")));
  EXPECT_FALSE(parseReply({}));
}

}  // namespace
}  // namespace torvane::ipad
