#include "fakes/bridge_test.h"

namespace torvane {

BridgeTest::BridgeTest() = default;
BridgeTest::~BridgeTest() = default;

void BridgeTest::SetUp() {
  platform.runEngine();
  launch();
  peer = admit(device, "iPad");
}

PeerID BridgeTest::admit(const test::SigningDevice& who, const std::string& name) {
  const PeerID admitted = platform.peerLink.newPeer(name);
  platform.peerLink.invite(admitted, who.rawKey());
  platform.time.runDue();  // the question about one that is new is answered with "Pair"
  connect(admitted);
  platform.alerts.shown.clear();
  return admitted;
}

void BridgeTest::receive(const PeerID& from, Bytes message) {
  platform.peerLink.current().receive(from, std::move(message));
  platform.time.runDue();
}

std::vector<P2PFrame::Frame> BridgeTest::repliesTo(const PeerID& to) {
  std::vector<P2PFrame::Frame> frames;
  for (const auto& message : platform.peerLink.current().sentTo(to)) {
    frames.push_back(P2PFrame::decode(message).value());
  }
  return frames;
}

std::string BridgeTest::challengeOf(const PeerID& who) {
  receive(who, test::challengeRequest(1000));
  const auto body = parseJsonObject(asText(repliesTo(who).back().body));
  return stringMember(body.value(), "challenge").value();
}

void BridgeTest::request(JsonObject header, std::string_view body) {
  receive(peer, device.envelope(challengeOf(peer), header, asBytes(body)));
}

std::vector<HttpRequest> BridgeTest::forwarded() {
  std::vector<HttpRequest> found;
  for (const auto& entry : platform.http.requests) {
    if (entry.totalTimeout == 300) found.push_back(entry);
  }
  return found;
}

std::size_t BridgeTest::replyCount() {
  return platform.peerLink.current().sent.size();
}

}  // namespace torvane
