#include <gtest/gtest.h>

#include "tools/echoing_helper.h"
#include "torvane_ipad/load_run.h"

namespace torvane::ipad {
namespace {

using namespace std::chrono_literals;

class TorvaneIpadLinkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto address = helper_.start();
    ASSERT_TRUE(address);
    fingerprint_ = fingerprintText(address->certificate);
    settings_ = {"127.0.0.1", address->port, "iPad", {{fingerprint_}}, 20s};
  }

  // An authenticated session of a device of its own; null after a failure.
  std::unique_ptr<HelperSession> open(std::uint8_t device) {
    const DeviceIdentity identity(DeviceIdentity::Seed{device});
    auto session = std::make_unique<HelperSession>(network_, identity, 20s, firstLoadId(device));
    const auto result = session->invite(settings_, 20s, [](const Welcome&) {});
    if (!std::holds_alternative<Welcome>(result) || session->authenticate()) return nullptr;
    return session;
  }

  EchoingHelper helper_;
  PeerNetwork network_;
  std::string fingerprint_;
  ConnectionSettings settings_;
};

TEST_F(TorvaneIpadLinkTest, HelperAcceptsTheDeviceAndItsRequests) {
  const auto session = open(1);
  ASSERT_TRUE(session);
  const auto answer = session->request({.path = "/api/state"});
  const auto* reply = std::get_if<Reply>(&answer);
  ASSERT_NE(reply, nullptr);
  EXPECT_EQ(asText(reply->body), R"({"path":"/api/state","version":"1"})");
}

TEST_F(TorvaneIpadLinkTest, WelcomeNamesTheHelperAndItsCertificate) {
  HelperSession session(network_, DeviceIdentity(DeviceIdentity::Seed{1}), 20s);
  settings_.trusted.reset();
  const auto result = session.invite(settings_, 20s, [](const Welcome&) {});
  const auto* welcome = std::get_if<Welcome>(&result);
  ASSERT_NE(welcome, nullptr);
  EXPECT_EQ(welcome->helperName, "Echo");
  EXPECT_EQ(welcome->fingerprint, fingerprint_);
}

TEST_F(TorvaneIpadLinkTest, DeviceShowsTheDigitsThatTheHelperShows) {
  HelperSession session(network_, DeviceIdentity(DeviceIdentity::Seed{1}), 20s);
  const auto result = session.invite(settings_, 20s, [](const Welcome&) {});
  const auto* welcome = std::get_if<Welcome>(&result);
  ASSERT_NE(welcome, nullptr);
  EXPECT_EQ(welcome->digits.size(), 7U);
  EXPECT_EQ(welcome->digits, helper_.digits());
}

TEST_F(TorvaneIpadLinkTest, OneOfSeveralCertificatesIsEnough) {
  settings_.trusted = {{std::string(64, '0'), fingerprint_}};
  EXPECT_NE(open(1), nullptr);
}

TEST_F(TorvaneIpadLinkTest, AnotherCertificateIsNotInvited) {
  for (const auto& trusted : {std::vector<std::string>{std::string(64, '0')}, {}}) {
    settings_.trusted = trusted;
    HelperSession session(network_, DeviceIdentity(DeviceIdentity::Seed{1}), 20s);
    const auto result = session.invite(settings_, 20s, [](const Welcome&) {});
    const auto* failure = std::get_if<LinkFailure>(&result);
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->kind, LinkFailure::Kind::otherHelper);
    EXPECT_EQ(failure->detail, fingerprint_);
  }
}

TEST_F(TorvaneIpadLinkTest, NameThatTheLinkForbidsIsRefused) {
  settings_.displayName = std::string(64, 'x');
  HelperSession session(network_, DeviceIdentity(DeviceIdentity::Seed{1}), 20s);
  const auto result = session.invite(settings_, 20s, [](const Welcome&) {});
  const auto* failure = std::get_if<LinkFailure>(&result);
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->kind, LinkFailure::Kind::refused);
  EXPECT_EQ(failure->detail, "name");
}

// As when the helper's user takes a while to answer an invitation.
TEST_F(TorvaneIpadLinkTest, NothingToSayIsNoSilence) {
  settings_.mostSilence = 500ms;
  HelperSession session(network_, DeviceIdentity(DeviceIdentity::Seed{1}), 2s);
  ASSERT_TRUE(std::holds_alternative<Welcome>(session.invite(settings_, 20s, [](auto&&) {})));
  constexpr std::int64_t kNeverAsked = 1000;
  const auto answer = session.repliesUntil(kNeverAsked);
  const auto* failure = std::get_if<LinkFailure>(&answer);
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->kind, LinkFailure::Kind::noAnswer);
}

TEST_F(TorvaneIpadLinkTest, LargeBodiesTravel) {
  const auto session = open(1);
  ASSERT_TRUE(session);
  const Bytes body(8 * 1024 * 1024, 'x');
  const auto answer = session->request({"/api/ink/overlay", "POST", "image/png", body});
  EXPECT_TRUE(std::holds_alternative<Reply>(answer));
}

TEST_F(TorvaneIpadLinkTest, LoadOfManyPeersIsAnsweredOnceEach) {
  std::vector<std::unique_ptr<HelperSession>> sessions;
  for (std::uint8_t device = 1; device <= 6; ++device) {
    sessions.push_back(open(device));
    ASSERT_TRUE(sessions.back());
  }
  LoadPlan plan;
  plan.requests = 3000;
  plan.inFlight = 16;
  plan.path = "/echo";
  plan.timeout = 60s;
  const auto run = std::make_shared<LoadRun>(network_, plan);
  auto future = run->result();
  run->start(sessions);
  ASSERT_EQ(future.wait_for(100s), std::future_status::ready);
  const LoadResult result = future.get();
  EXPECT_EQ(result.counts.answered, 3000U);
  EXPECT_EQ(result.latencies.count(), 3000U);
  EXPECT_TRUE(result.counts.isFaultless());
  EXPECT_EQ(result.endedPeers, 0U);
}

TEST_F(TorvaneIpadLinkTest, LoadOfAGreedyPeerIsCountedApart) {
  std::vector<std::unique_ptr<HelperSession>> sessions;
  for (std::uint8_t device = 1; device <= 3; ++device) {
    sessions.push_back(open(device));
    ASSERT_TRUE(sessions.back());
  }
  LoadPlan plan;
  plan.greedy = 2000;
  plan.path = "/echo";
  plan.timeout = 60s;
  const auto run = std::make_shared<LoadRun>(network_, plan);
  auto future = run->result();
  run->start(sessions);
  ASSERT_EQ(future.wait_for(100s), std::future_status::ready);
  const LoadResult result = future.get();
  EXPECT_EQ(result.greedyCounts.answered, 2000U);
  EXPECT_EQ(result.greedyLatencies.count(), 2000U);
  EXPECT_TRUE(result.greedyCounts.isFaultless());
  EXPECT_GT(result.counts.sent, 0U);
  EXPECT_TRUE(result.counts.isFaultless());
  EXPECT_EQ(result.latencies.count(), result.counts.sent);
}

}  // namespace
}  // namespace torvane::ipad
