#pragma once

#include "fakes/helper_test.h"
#include "protocol/p2p_frame.h"
#include "support/signing_device.h"

namespace torvane {

// A launched helper with an engine that answers, and iPads that talk to it.
class BridgeTest : public HelperTest {
 protected:
  test::SigningDevice device{1};
  PeerID peer;

  void SetUp() override {
    platform.runEngine();
    launch();
    peer = admit(device, "iPad");
  }

  // A paired device connects; the peer it is now.
  PeerID admit(const test::SigningDevice& who, const std::string& name) {
    helper->pair(who.deviceKey(), name);
    const PeerID admitted = platform.peerLink.newPeer(name);
    platform.peerLink.invite(admitted, who.rawKey());
    platform.time.runDue();
    connect(admitted);
    return admitted;
  }

  void receive(const PeerID& from, Bytes message) {
    platform.peerLink.current().receive(from, std::move(message));
    platform.time.runDue();
  }
  std::vector<P2PFrame::Frame> repliesTo(const PeerID& to) {
    std::vector<P2PFrame::Frame> frames;
    for (const auto& message : platform.peerLink.current().sentTo(to)) {
      frames.push_back(P2PFrame::decode(message).value());
    }
    return frames;
  }
  std::string challengeOf(const PeerID& who) {
    receive(who, test::challengeRequest(1000));
    const auto body = parseJsonObject(asText(repliesTo(who).back().body));
    return stringMember(body.value(), "challenge").value();
  }
  // A signed request over the connection's own challenge.
  void request(JsonObject header, std::string_view body = "") {
    receive(peer, device.envelope(challengeOf(peer), header, asBytes(body)));
  }
  // What reached the engine because of peers, without the helper's own probes.
  std::vector<HttpRequest> forwarded() {
    std::vector<HttpRequest> found;
    for (const auto& entry : platform.http.requests) {
      if (entry.totalTimeout == 300) found.push_back(entry);
    }
    return found;
  }
  std::size_t replyCount() { return platform.peerLink.current().sent.size(); }
};

}  // namespace torvane
