#include <gtest/gtest.h>

#include <thread>

#include "support/link_host.h"
#include "support/websocket_frame.h"

namespace torvane {
namespace {

using std::chrono::milliseconds;
using testing::clientFrame;
using testing::clientFrameHeader;
using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

constexpr std::uint8_t kText = 0x81;
constexpr std::uint8_t kBinary = 0x82;
constexpr std::uint8_t kBinaryBegin = 0x02;
constexpr std::uint8_t kMore = 0x00;
constexpr std::uint8_t kClose = 0x88;

PeerLinkOptions with(const PeerLinkCaps& caps) {
  PeerLinkOptions options;
  options.caps = caps;
  return options;
}

// Without a limit on how often strangers invite.
PeerLinkCaps flooded(InvitationCaps caps) {
  caps.perMinute = caps.perMinuteOfOrigin = caps.perMinuteOfKey = 100'000;
  return {.invitations = caps};
}

PeerLinkOptions with(const PeerLinkTimes& times) {
  PeerLinkOptions options;
  options.times = times;
  return options;
}

// Tries again while the server has not noticed yet that somebody left.
std::string inviteUntilWaiting(const LinkHost& host, const DeviceKeyPair& key) {
  std::string outcome;
  for (int i = 0; i < 1000 && outcome != "waiting"; ++i) {
    LinkClient client(host.clientOptions());
    outcome = client.invite("iPad", key);
  }
  return outcome;
}

TEST(PeerLinkAbuse, ClosesOnTooLongAControlMessage) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect() && client.receiveHello());
  ASSERT_TRUE(client.sendRaw(clientFrameHeader(kText, 4097)));
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1009U);
}

TEST(PeerLinkAbuse, ReadsAControlMessageOfTheLargestSize) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect());
  const auto nonce = client.receiveHello();
  ASSERT_TRUE(nonce);
  std::string text = client.inviteText("iPad", DeviceKeyPair::numbered(1), *nonce);
  text.append(4096 - text.size(), ' ');
  ASSERT_TRUE(client.sendText(text));
  EXPECT_EQ(client.outcome(), "waiting");
}

TEST(PeerLinkAbuse, ClosesOnTooLargeAFrameByItsHeaderAlone) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(client.sendRaw(clientFrameHeader(kBinary, (std::uint64_t{16} << 20) + 1)));
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1009U);
  EXPECT_EQ(host.changes.next()->state, PeerState::notConnected);
}

TEST(PeerLinkAbuse, ClosesOnFragmentsThatGrowTooLarge) {
  LinkHost host(with(PeerLinkCaps{.messageBytes = 8192}));
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(client.sendRaw(clientFrame(kBinaryBegin, Bytes(8000))));
  ASSERT_TRUE(client.sendRaw(clientFrame(kMore, Bytes(190))));
  ASSERT_TRUE(client.sendRaw(clientFrame(kMore, Bytes(3))));
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1009U);
  EXPECT_TRUE(host.received.empty());
}

TEST(PeerLinkAbuse, ClosesOnTextAfterTheAcceptance) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(client.sendText("{}"));
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1002U);
  EXPECT_EQ(host.changes.next()->state, PeerState::notConnected);
  EXPECT_TRUE(host.received.empty());
}

TEST(PeerLinkAbuse, ClosesOnAFrameInsteadOfTheInvitation) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect() && client.receiveHello());
  ASSERT_TRUE(client.sendBinary(Bytes{1}));
  EXPECT_EQ(client.outcome(), "protocol");
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1002U);
}

TEST(PeerLinkAbuse, ClosesOnAnythingSentWhileWaiting) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  for (const bool isText : {true, false}) {
    LinkClient client(host.clientOptions());
    ASSERT_EQ(client.invite("iPad", DeviceKeyPair::numbered(1)), "waiting");
    ASSERT_TRUE(isText ? client.sendText("{}") : client.sendBinary(Bytes{1}));
    EXPECT_EQ(client.outcome(), "protocol");
  }
  EXPECT_TRUE(host.changes.empty());
}

TEST(PeerLinkAbuse, DropsAPeerThatNeverReads) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.receiveBuffer = 4096;
  LinkClient client(options);
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  const PeerID peer = host.session->connectedPeers().at(0);
  for (int i = 0; i < 90; ++i) host.session->sendReliably(Bytes(std::size_t{1} << 20), {peer});
  const auto change = host.changes.next(std::chrono::seconds(5));
  ASSERT_TRUE(change);
  EXPECT_EQ(change->state, PeerState::notConnected);
  EXPECT_TRUE(change->connectedPeers.empty());
}

TEST(PeerLinkAbuse, DropsAPeerThatAnswersNoPings) {
  LinkHost host(with(PeerLinkTimes{.ping = milliseconds(60), .dead = milliseconds(200)}));
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  EXPECT_EQ(host.changes.next()->state, PeerState::notConnected);
  EXPECT_TRUE(client.waitForEnd());
}

TEST(PeerLinkAbuse, KeepsASilentPeerThatAnswersPings) {
  LinkHost host(with(PeerLinkTimes{.ping = milliseconds(50), .dead = milliseconds(2000)}));
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  EXPECT_TRUE(client.answerPings(50));  // longer than a dead one would have had
}

TEST(PeerLinkAbuse, DropsWhoStaysSilentAtAnyStepOfTheHandshake) {
  LinkHost host(with(PeerLinkTimes{.handshake = milliseconds(300)}));
  ASSERT_NE(host.start(), 0);
  LinkClient plain(host.clientOptions());
  ASSERT_TRUE(plain.connectTcp());
  EXPECT_TRUE(plain.waitForEnd());
  LinkClient secured(host.clientOptions());
  ASSERT_TRUE(secured.connectTls());
  EXPECT_TRUE(secured.waitForEnd());
  LinkClient open(host.clientOptions());
  ASSERT_TRUE(open.connect());
  EXPECT_TRUE(open.waitForEnd());
}

TEST(PeerLinkAbuse, DropsTheOldestConnectionOfTheBusiestAddressForANewOne) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  std::vector<std::unique_ptr<LinkClient>> idle;
  for (int i = 0; i < 17; ++i) {
    auto options = host.clientOptions();
    options.from = i % 4 == 1 ? "127.0.0.2" : "127.0.0." + std::to_string(3 + i);
    idle.push_back(std::make_unique<LinkClient>(options));
    ASSERT_TRUE(idle.back()->connectTls());
  }
  EXPECT_TRUE(idle[1]->waitForEnd());
  for (const int i : {0, 2, 5, 16}) EXPECT_TRUE(idle[static_cast<std::size_t>(i)]->connect());
}

TEST(PeerLinkAbuse, CountsRefusedConnectionsUntilTheyHaveEnded) {
  PeerLinkOptions options = with(PeerLinkCaps{.strangers = 4});
  options.times.close = std::chrono::minutes(5);
  LinkHost host(std::move(options));
  ASSERT_NE(host.start(), 0);
  std::vector<std::unique_ptr<LinkClient>> refused;
  for (int i = 0; i < 4; ++i) {
    refused.push_back(std::make_unique<LinkClient>(host.clientOptions()));
    ASSERT_EQ(refused.back()->invite("", DeviceKeyPair::numbered(1)), "name");
  }
  EXPECT_TRUE(LinkClient(host.clientOptions()).connectTls());
  EXPECT_TRUE(refused[0]->waitForEnd());
}

TEST(PeerLinkAbuse, SpeaksNoOlderTls) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.isOldTls = true;
  EXPECT_FALSE(LinkClient(options).connectTls());
}

TEST(PeerLinkAbuse, NoticesAClosingPeerThatKeepsItsTcpConnection) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(client.sendRaw(clientFrame(kClose, Bytes{0x03, 0xE8})));
  const auto change = host.changes.next(std::chrono::seconds(2));
  ASSERT_TRUE(change);
  EXPECT_EQ(change->state, PeerState::notConnected);
}

TEST(PeerLinkAbuse, KeepsAPeerThatTakesALongMessageSlowly) {
  LinkHost host(with(PeerLinkTimes{.ping = milliseconds(100), .dead = milliseconds(1000)}));
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.receiveBuffer = 65536;
  LinkClient client(options);
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  const PeerID peer = host.session->connectedPeers().at(0);
  host.session->sendReliably(Bytes(std::size_t{24} << 20, 1), {peer});
  // About two seconds in all, and no pong: the peer does nothing but take bytes.
  EXPECT_GT(client.takeSlowly(std::size_t{24} << 20, std::chrono::milliseconds(2000)),
            std::size_t{24} << 20);
  EXPECT_TRUE(host.changes.empty());
}

TEST(PeerLinkAbuse, CapsWaitingInvitationsAndFreesThePlaceOfAnInviterWhoLeft) {
  LinkHost host(with(flooded({.waiting = 1})));
  ASSERT_NE(host.start(), 0);
  LinkClient first(host.clientOptions());
  ASSERT_EQ(first.invite("iPad", DeviceKeyPair::numbered(1)), "waiting");
  LinkClient second(host.clientOptions());
  EXPECT_EQ(second.invite("iPad", DeviceKeyPair::numbered(2)), "busy");
  first.vanish();
  EXPECT_EQ(inviteUntilWaiting(host, DeviceKeyPair::numbered(2)), "waiting");
}

TEST(PeerLinkAbuse, RefusesAFloodOfNewKeys) {
  LinkHost host(with(PeerLinkCaps{.invitations = {.perMinute = 2}}));
  ASSERT_NE(host.start(), 0);
  LinkClient first(host.clientOptions());
  ASSERT_EQ(first.invite("iPad", DeviceKeyPair::numbered(1)), "waiting");
  LinkClient second(host.clientOptions());
  ASSERT_EQ(second.invite("iPad", DeviceKeyPair::numbered(2)), "waiting");
  LinkClient third(host.clientOptions());
  EXPECT_EQ(third.invite("iPad", DeviceKeyPair::numbered(3)), "busy");
  EXPECT_FALSE(third.receive());
  EXPECT_EQ(third.closeCode(), 1008U);
}

TEST(PeerLinkAbuse, RefusesAnAddressWhoseProofsKeepFailing) {
  LinkHost host(with(PeerLinkCaps{.failedProofsPerMinute = 2}));
  ASSERT_NE(host.start(), 0);
  const auto key = DeviceKeyPair::numbered(1);
  for (const char* expected : {"proof", "proof", "busy"}) {
    LinkClient client(host.clientOptions());
    ASSERT_TRUE(client.connect() && client.receiveHello());
    ASSERT_TRUE(client.sendText(client.inviteText("iPad", key, {})));
    EXPECT_EQ(client.outcome(), expected);
  }
  auto elsewhere = host.clientOptions();
  elsewhere.from = "127.0.0.9";
  EXPECT_EQ(LinkClient(elsewhere).invite("iPad", key), "waiting");
}

// Round trips of one client while another floods the host, which answers only the polite one.
// Returns what it holds of the other's.
std::vector<MessageLease> serveThePoliteOne(LinkHost& host, LinkClient& polite, int roundTrips) {
  std::vector<MessageLease> unanswered;
  for (int i = 0; i < roundTrips; ++i) {
    if (!polite.sendBinary(Bytes{1})) return {};
    auto received = host.received.next();
    for (; received && received->data.size() > 1; received = host.received.next()) {
      unanswered.push_back(std::move(received->lease));
    }
    if (!received) return {};
    host.session->sendReliably({2}, {received->peer, std::move(received->lease)});
    if (!polite.receive()) return {};
  }
  return unanswered;
}

TEST(PeerLinkAbuse, ReadsNoFurtherThanTheProgramAnswersAndGoesOnWithOthers) {
  constexpr std::size_t kMessage = 65536;
  constexpr int kMessages = 1000;  // more than sockets hold
  LinkHost host(with(PeerLinkCaps{.received = {.ofOne = 4 * kMessage}}));
  ASSERT_NE(host.start(), 0);
  LinkClient greedy(host.clientOptions());
  LinkClient polite(host.clientOptions());
  ASSERT_TRUE(host.admit(greedy, "greedy", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(host.admit(polite, "polite", DeviceKeyPair::numbered(2)));
  std::thread sender([&greedy] {
    for (int i = 0; i < kMessages; ++i) greedy.sendBinary(Bytes(kMessage));
  });
  auto unanswered = serveThePoliteOne(host, polite, 300);
  EXPECT_GE(unanswered.size(), 2U);
  EXPECT_LE(unanswered.size(), 5U);
  int answered = static_cast<int>(unanswered.size());
  unanswered.clear();
  while (answered < kMessages && host.received.next()) ++answered;
  EXPECT_EQ(answered, kMessages);
  sender.join();
}

TEST(PeerLinkAbuse, ChargesForAMessageUntilItsAnswerIsSent) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  ASSERT_TRUE(client.sendBinary(Bytes{1}));
  auto received = host.received.next();
  ASSERT_TRUE(received);
  const std::weak_ptr<const void> charged = received->lease;
  EXPECT_FALSE(charged.expired());
  host.session->sendReliably({2}, {received->peer, std::move(received->lease)});
  ASSERT_TRUE(client.receive());
  ASSERT_TRUE(client.sendBinary(Bytes{3}));  // handled after the end of the sending
  ASSERT_TRUE(host.received.next());
  EXPECT_TRUE(charged.expired());
}

TEST(PeerLinkAbuse, CarriesTheLongestMessageThatItNames) {
  LinkHost host(with(PeerLinkCaps{.unsentBytes = 100'000}));
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  const PeerID peer = host.session->connectedPeers().at(0);
  const std::size_t longest = host.session->longestMessage();
  host.session->sendReliably(Bytes(longest), {peer});
  const auto message = client.receive();
  ASSERT_TRUE(message);
  EXPECT_EQ(message->data.size(), longest);
  EXPECT_TRUE(host.changes.empty());
}

TEST(PeerLinkAbuse, DropsAPeerWhoseUnfinishedMessageTakesAllTheRoom) {
  const ReceiveShares little{.inAll = std::size_t{1} << 20, .reserved = 0};
  LinkHost host(with(PeerLinkCaps{.received = little}));
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  client.sendRaw(clientFrame(kBinaryBegin, Bytes(std::size_t{3} << 20)));
  EXPECT_EQ(host.changes.next()->state, PeerState::notConnected);
}

TEST(PeerLinkAbuse, RefusesForeignOriginsAndOtherUpgrades) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  options.origin = "https://evil.example";
  LinkClient foreign(options);
  EXPECT_FALSE(foreign.connect());
  EXPECT_EQ(foreign.httpStatus(), 403U);
  options.origin = "https://127.0.0.1:" + std::to_string(options.port);
  EXPECT_TRUE(LinkClient(options).connect());
  options.subprotocol = "torvane.link.3";
  LinkClient other(options);
  EXPECT_FALSE(other.connect());
  EXPECT_EQ(other.httpStatus(), 400U);
  options.target = "/elsewhere";
  LinkClient lost(options);
  EXPECT_FALSE(lost.connect());
  EXPECT_EQ(lost.httpStatus(), 404U);
}

TEST(PeerLinkAbuse, AnswersBrowsersWithAPage) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  const auto page = LinkClient(host.clientOptions()).request("GET", "/");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->first, 200U);
  EXPECT_NE(page->second.find("<title>Torvane P2P Helper</title>"), std::string::npos);
  const auto missing = LinkClient(host.clientOptions()).request("GET", "/favicon.ico");
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->first, 404U);
  const auto posted = LinkClient(host.clientOptions()).request("POST", "/");
  ASSERT_TRUE(posted);
  EXPECT_EQ(posted->first, 405U);
}

}  // namespace
}  // namespace torvane
