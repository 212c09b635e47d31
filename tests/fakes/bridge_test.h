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

  BridgeTest();
  ~BridgeTest() override;
  void SetUp() override;

  // A paired device connects; the peer it is now.
  PeerID admit(const test::SigningDevice& who, const std::string& name);

  void receive(const PeerID& from, Bytes message);
  std::vector<P2PFrame::Frame> repliesTo(const PeerID& to);
  std::string challengeOf(const PeerID& who);
  // A signed request over the connection's own challenge.
  void request(JsonObject header, std::string_view body = "");
  // What reached the engine because of peers, without the helper's own probes.
  std::vector<HttpRequest> forwarded();
  std::size_t replyCount();
};

}  // namespace torvane
