#include <algorithm>

#include "fakes/bridge_test.h"

namespace torvane {
namespace {

class RequestRouting : public BridgeTest {
 protected:
  std::vector<std::string> forwardedURLs() {
    std::vector<std::string> urls;
    for (const auto& entry : forwarded()) urls.push_back(entry.url);
    return urls;
  }
};

TEST_F(RequestRouting, PeerWithoutAKeyIsNeverServed) {
  const auto stranger = platform.peerLink.newPeer("stranger");
  connect(stranger);
  receive(stranger, test::challengeRequest(1));
  receive(stranger, device.envelope("", {{"id", 1}, {"path", "/"}}));
  receive(stranger, toBytes("rubbish"));
  EXPECT_EQ(replyCount(), 0U);
}

TEST_F(RequestRouting, MessageThatIsNotAFrameIsDropped) {
  receive(peer, toBytes("\xFF\xFF\xFF\xFF{}"));
  receive(peer, {});
  EXPECT_EQ(replyCount(), 0U);
}

TEST_F(RequestRouting, SignedRequestBeforeAnyChallengeIsDropped) {
  receive(peer, device.envelope("", {{"id", 1}, {"path", "/api/state"}}));
  EXPECT_EQ(replyCount(), 0U);
  EXPECT_TRUE(forwarded().empty());
}

TEST_F(RequestRouting, VerifiedRequestIsForwardedAndAnsweredToItsPeerAlone) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  platform.http.server = [](const HttpRequest&) {
    return FakeAnswer{httpResult(201, "made", "text/plain")};
  };
  request({{"id", 5}, {"path", "/api/goto?slide=2"}});
  ASSERT_EQ(forwarded().size(), 1U);
  EXPECT_EQ(forwarded()[0].url, "http://127.0.0.1:8484/api/goto?slide=2");
  const auto reply = repliesTo(peer).back();
  const JsonObject expected = {{"id", 5}, {"status", 201}, {"contentType", "text/plain"}};
  EXPECT_EQ(reply.header, expected);
  EXPECT_EQ(asText(reply.body), "made");
  EXPECT_TRUE(repliesTo(otherPeer).empty());
}

TEST_F(RequestRouting, PostCarriesItsBodyAndContentType) {
  request({{"id", 1}, {"path", "/x"}, {"method", "POST"}, {"contentType", "application/json"}},
          "{}");
  EXPECT_EQ(forwarded().at(0).method, "POST");
  EXPECT_EQ(asText(forwarded().at(0).body), "{}");
  EXPECT_EQ(forwarded().at(0).contentType, "application/json");
}

TEST_F(RequestRouting, PostWithoutABodyCarriesNeither) {
  request({{"id", 1}, {"path", "/x"}, {"method", "POST"}, {"contentType", "application/json"}});
  EXPECT_EQ(forwarded().at(0).method, "POST");
  EXPECT_TRUE(forwarded().at(0).body.empty());
  EXPECT_EQ(forwarded().at(0).contentType, std::nullopt);
}

TEST_F(RequestRouting, MethodThatIsANumberIsSentAsGet) {
  request({{"id", 1}, {"path", "/x"}, {"method", 1}});
  EXPECT_EQ(forwarded().at(0).method, "GET");
}

TEST_F(RequestRouting, QueryReachesTheEngineIntact) {
  request({{"id", 1}, {"path", "/api/ink/events?since=42"}});
  EXPECT_EQ(forwarded().at(0).url, "http://127.0.0.1:8484/api/ink/events?since=42");
}

TEST_F(RequestRouting, StoppedEngineGives502WithTheReason) {
  platform.http.server = nullptr;
  request({{"id", 8}, {"path", "/api/state"}});
  const JsonObject expected = {{"id", 8},
                               {"status", 502},
                               {"contentType", "application/octet-stream"},
                               {"error", "Could not connect to the server."}};
  EXPECT_EQ(repliesTo(peer).back().header, expected);
  EXPECT_TRUE(repliesTo(peer).back().body.empty());
}

TEST_F(RequestRouting, PathThatMakesNoURLIsDroppedAndUsesUpItsId) {
  const auto replies = [&] { return repliesTo(peer).size(); };
  request({{"id", 1}, {"path", "/a b"}});
  const auto before = replies();
  request({{"id", 1}, {"path", "/ab"}});
  EXPECT_EQ(replies(), before + 1);  // one more challenge, no answer
  EXPECT_TRUE(forwarded().empty());
}

TEST_F(RequestRouting, RequestWithoutAPathUsesUpItsId) {
  request({{"id", 1}});
  request({{"id", 1}, {"path", "/used"}});
  request({{"id", 2}, {"path", "/new"}});
  EXPECT_EQ(forwardedURLs(), std::vector<std::string>{"http://127.0.0.1:8484/new"});
}

TEST_F(RequestRouting, ForwardsWhatOnlyLooksLikeARouteOfItsOwn) {
  std::vector<std::string> expected;
  for (const char* path : {"/p2p/auth", "/p2p/auth?x", "/p2p/bridge-info/", "/p2p/bridge-info/x",
                           "/p2p/bridge-info?x", "/p2p/", "/P2P/bridge-info"}) {
    const auto id = static_cast<std::int64_t>(expected.size());
    request({{"id", id}, {"path", path}});
    EXPECT_EQ(integerMember(repliesTo(peer).back().header, "id"), id) << path;
    expected.push_back(std::string("http://127.0.0.1:8484") + path);
  }
  EXPECT_EQ(forwardedURLs(), expected);
}

TEST_F(RequestRouting, BodilessRequestIsServedWhateverItsContentType) {
  request({{"id", 1}, {"path", "/x"}, {"method", "POST"}, {"contentType", "a/b\r\nX: y"}});
  EXPECT_EQ(forwardedURLs(), std::vector<std::string>{"http://127.0.0.1:8484/x"});
  EXPECT_EQ(integerMember(repliesTo(peer).back().header, "status"), 200);
}

TEST_F(RequestRouting, RetargetingPathIsForwardedPinnedToTheEngine) {
  for (const char* path : {"@evil/x", "1/x", "@[::1]:22/"}) {
    request({{"id", static_cast<std::int64_t>(forwarded().size())}, {"path", path}});
  }
  ASSERT_EQ(forwarded().size(), 3U);
  for (const auto& entry : forwarded()) {
    EXPECT_EQ(entry.onlyEndpoint, (HttpEndpoint{"127.0.0.1", 8484}));
  }
}

TEST_F(RequestRouting, MethodThatWouldSmuggleGets502AndNeverLeaves) {
  request({{"id", 4}, {"path", "/x"}, {"method", "GET /y HTTP/1.1\r\nX:"}});
  EXPECT_TRUE(forwarded().empty());
  const auto reply = repliesTo(peer).back();
  EXPECT_EQ(integerMember(reply.header, "status"), 502);
  EXPECT_TRUE(stringMember(reply.header, "error").has_value());
}

TEST_F(RequestRouting, ReplayOnOneConnectionIsAnsweredOnce) {
  const auto envelope = device.envelope(challengeOf(peer), {{"id", 1}, {"path", "/x"}});
  receive(peer, envelope);
  receive(peer, envelope);
  EXPECT_EQ(forwarded().size(), 1U);
}

TEST_F(RequestRouting, EnvelopeOfAnEarlierConnectionIsRefused) {
  const auto envelope = device.envelope(challengeOf(peer), {{"id", 1}, {"path", "/x"}});
  disconnect(peer);
  const auto again = admit(device, "iPad");
  const auto challenge = challengeOf(again);
  receive(again, envelope);
  EXPECT_TRUE(forwarded().empty());
  EXPECT_EQ(repliesTo(again).size(), 1U);  // the challenge
  receive(again, device.envelope(challenge, {{"id", 1}, {"path", "/x"}}));
  EXPECT_EQ(forwarded().size(), 1U);
}

TEST_F(RequestRouting, IdsCountAgainOnANewConnection) {
  request({{"id", 1}, {"path", "/x"}});
  disconnect(peer);
  peer = admit(device, "iPad");
  request({{"id", 1}, {"path", "/x"}});
  EXPECT_EQ(forwarded().size(), 2U);
}

TEST_F(RequestRouting, OneDevicesSignatureIsWorthlessOnAnothersConnection) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  receive(otherPeer, device.envelope(challengeOf(otherPeer), {{"id", 1}, {"path", "/x"}}));
  EXPECT_TRUE(forwarded().empty());
}

TEST_F(RequestRouting, DataOfAReplacedSessionIsIgnored) {
  const auto challenge = challengeOf(peer);
  const auto old = platform.peerLink.sessions.back();
  disconnect(peer);
  ASSERT_EQ(platform.peerLink.sessions.size(), 2U);
  platform.peerLink.invite(peer, device.rawKey());
  platform.time.runDue();
  old->receive(peer, device.envelope(challenge, {{"id", 1}, {"path", "/x"}}));
  platform.time.runDue();
  EXPECT_TRUE(forwarded().empty());
}

TEST_F(RequestRouting, ForgettingAllDevicesServesTheConnectedUntilTheyDrop) {
  choose("Forget Paired Devices…");
  request({{"id", 1}, {"path", "/x"}});
  EXPECT_EQ(forwarded().size(), 1U);
  disconnect(peer);
  platform.alerts.shown.clear();
  platform.peerLink.invite(peer, device.rawKey());
  platform.time.runDue();
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Pair with “iPad”?");
}

TEST_F(RequestRouting, SamePeerThatComesBackStartsAnew) {
  const auto challenge = challengeOf(peer);
  const auto envelope = device.envelope(challenge, {{"id", 1}, {"path", "/x"}});
  receive(peer, envelope);
  disconnect(peer);
  platform.peerLink.invite(peer, device.rawKey());
  connect(peer);
  EXPECT_NE(challengeOf(peer), challenge);
  receive(peer, envelope);
  EXPECT_EQ(forwarded().size(), 1U);
  request({{"id", 1}, {"path", "/x"}});
  EXPECT_EQ(forwarded().size(), 2U);
}

TEST_F(RequestRouting, RepliesLeaveInTheOrderOfTheAnswers) {
  for (std::int64_t id = 0; id < 20; ++id) {
    receive(peer, test::challengeRequest(100 + id));
    request({{"id", id}, {"path", "/x"}});
  }
  std::vector<std::int64_t> ids, expected;
  for (const auto& reply : repliesTo(peer)) {
    const auto id = integerMember(reply.header, "id").value();
    if (id < 1000) ids.push_back(id);  // else a challenge that `request` asked for
  }
  for (std::int64_t id = 0; id < 20; ++id) expected.insert(expected.end(), {100 + id, id});
  EXPECT_EQ(ids, expected);
}

TEST_F(RequestRouting, AnswersMayOvertakeEachOther) {
  platform.http.server = [](const HttpRequest& asked) {
    return FakeAnswer{httpResult(200), asked.url.back() == '1' ? 2.0 : 1.0};
  };
  request({{"id", 1}, {"path", "/1"}});
  request({{"id", 2}, {"path", "/2"}});
  platform.time.advance(2.0);
  const auto replies = repliesTo(peer);
  EXPECT_EQ(integerMember(replies.end()[-2].header, "id"), 2);
  EXPECT_EQ(integerMember(replies.end()[-1].header, "id"), 1);
}

TEST_F(RequestRouting, AnswerGoesToTheSessionThatAsked) {
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200), 1.0}; };
  request({{"id", 1}, {"path", "/x"}});
  const auto asked = platform.peerLink.sessions.back();
  disconnect(peer);
  platform.time.advance(2.0);
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(asked->sent.size(), 2U);  // the challenge, then the late answer
  EXPECT_TRUE(platform.peerLink.current().sent.empty());
}

TEST_F(RequestRouting, HttpSessionIsMadeOnceAtTheFirstForwardedRequest) {
  EXPECT_TRUE(platform.http.ephemeralTimeouts.empty());
  request({{"id", 1}, {"path", "/x"}});
  request({{"id", 2}, {"path", "/x"}});
  EXPECT_EQ(platform.http.ephemeralTimeouts, std::vector<double>{120});
}

TEST_F(RequestRouting, FloodOfBadSignaturesIsHeldBackAndTheRealDeviceGoesOn) {
  const auto challenge = challengeOf(peer);
  const test::SigningDevice impostor(9);
  const auto forged = impostor.envelope(challenge, {{"id", 1}, {"path", "/x"}});
  for (int i = 0; i < 1000; ++i) receive(peer, forged);
  receive(peer, device.envelope(challenge, {{"id", 1}, {"path", "/x"}}));
  EXPECT_TRUE(forwarded().empty());
  platform.time.advance(0.1);
  receive(peer, device.envelope(challenge, {{"id", 1}, {"path", "/x"}}));
  EXPECT_EQ(forwarded().size(), 1U);
}

TEST_F(RequestRouting, OneConnectionsBadSignaturesDoNotSlowAnother) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  challengeOf(otherPeer);
  for (int i = 0; i < 1000; ++i) receive(otherPeer, test::frameOf({{"signature", "AAAA"}}));
  request({{"id", 1}, {"path", "/x"}});
  EXPECT_EQ(forwarded().size(), 1U);
}

TEST_F(RequestRouting, ValidRequestsAreNeverHeldBack) {
  const auto challenge = challengeOf(peer);
  for (int i = 0; i < 1000; ++i) {
    receive(peer, device.envelope(challenge, {{"id", i}, {"path", "/x"}}));
  }
  EXPECT_EQ(forwarded().size(), 1000U);
}

TEST_F(RequestRouting, AnotherPeersRequestDoesNotWaitForAFlood) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  const auto challenge = challengeOf(peer);
  const auto otherChallenge = challengeOf(otherPeer);
  auto& session = platform.peerLink.current();
  for (int i = 0; i < 1000; ++i) {
    session.receive(peer, device.envelope(challenge, {{"id", i}, {"path", "/flood"}}));
  }
  session.receive(otherPeer, other.envelope(otherChallenge, {{"id", 1}, {"path", "/polite"}}));
  platform.time.runDue();
  const auto sent = forwarded();
  ASSERT_EQ(sent.size(), 1001U);
  const auto polite = std::find_if(sent.begin(), sent.end(), [](const HttpRequest& each) {
    return each.url.ends_with("/polite");
  });
  EXPECT_LT(polite - sent.begin(), 5);
}

TEST_F(RequestRouting, WhatAPeerSentIsHandledBeforeItsEnd) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  const auto challenge = challengeOf(peer);
  const auto otherChallenge = challengeOf(otherPeer);
  auto& session = platform.peerLink.current();
  for (int i = 0; i < 10; ++i) {
    session.receive(otherPeer, other.envelope(otherChallenge, {{"id", i}, {"path", "/x"}}));
    session.receive(peer, device.envelope(challenge, {{"id", i}, {"path", "/last"}}));
  }
  session.changeState(peer, PeerState::notConnected);
  platform.time.runDue();
  EXPECT_EQ(forwarded().size(), 20U);
}

TEST_F(RequestRouting, RequestsOfOnePeerGoIntoOneLaneOfTheEngine) {
  const test::SigningDevice other(2);
  const auto otherPeer = admit(other, "Other");
  request({{"id", 1}, {"path", "/x"}});
  request({{"id", 2}, {"path", "/x"}});
  receive(otherPeer, other.envelope(challengeOf(otherPeer), {{"id", 1}, {"path", "/x"}}));
  ASSERT_EQ(forwarded().size(), 3U);
  EXPECT_NE(forwarded()[0].lane, 0U);
  EXPECT_EQ(forwarded()[0].lane, forwarded()[1].lane);
  EXPECT_NE(forwarded()[0].lane, forwarded()[2].lane);
}

TEST_F(RequestRouting, MessageIsChargedUntilItsAnswerHasGone) {
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200), 5.0}; };
  auto lease = std::make_shared<int>(0);
  const std::weak_ptr<int> charged = lease;
  const auto envelope = device.envelope(challengeOf(peer), {{"id", 1}, {"path", "/x"}});
  platform.peerLink.current().receive(peer, envelope, std::move(lease));
  platform.time.advance(4.9);
  EXPECT_FALSE(charged.expired());
  platform.time.advance(0.2);
  EXPECT_EQ(repliesTo(peer).size(), 2U);  // the challenge, then the answer
  EXPECT_TRUE(charged.expired());
}

TEST_F(RequestRouting, MessageThatIsDroppedIsChargedNoLonger) {
  auto lease = std::make_shared<int>(0);
  const std::weak_ptr<int> charged = lease;
  platform.peerLink.current().receive(peer, toBytes("rubbish"), std::move(lease));
  EXPECT_FALSE(charged.expired());
  platform.time.runDue();
  EXPECT_TRUE(charged.expired());
}

TEST_F(RequestRouting, AnswerLongerThanTheLinkCarriesIs502WithTheReason) {
  platform.peerLink.current().longest = 1000;
  platform.http.server = [](const HttpRequest& asked) {
    EXPECT_EQ(asked.maxResponseBytes, 1000U);  // more need not even be read
    return FakeAnswer{httpResult(200, std::string(990, 'x'), "text/plain")};
  };
  request({{"id", 7}, {"path", "/x"}});
  const JsonObject expected = {{"id", 7},
                               {"status", 502},
                               {"contentType", "application/octet-stream"},
                               {"error", "The answer is too long to be sent to the device."}};
  EXPECT_EQ(repliesTo(peer).back().header, expected);
  EXPECT_TRUE(repliesTo(peer).back().body.empty());
}

}  // namespace
}  // namespace torvane
