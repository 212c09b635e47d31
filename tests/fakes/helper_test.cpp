#include "fakes/helper_test.h"

#include "protocol/base64.h"

namespace torvane {

HelperTest::HelperTest() = default;
HelperTest::~HelperTest() = default;

BridgeDelegate& HelperTest::construct() {
  helper = std::make_unique<BridgeDelegate>(platform.ports);
  return *helper;
}

BridgeDelegate& HelperTest::launch() {
  construct().applicationDidFinishLaunching();
  platform.time.runDue();
  return *helper;
}

Bytes HelperTest::rawKey(std::uint8_t seed) {
  return Bytes(32, seed);
}

std::string HelperTest::deviceKey(std::uint8_t seed) {
  return base64Encode(rawKey(seed));
}

std::shared_ptr<std::vector<InvitationAnswer>> HelperTest::invite(const PeerID& peer,
                                                                  std::uint8_t seed) {
  auto answers = platform.peerLink.invite(peer, rawKey(seed));
  platform.time.runDue();
  return answers;
}

void HelperTest::connect(const PeerID& peer) {
  platform.peerLink.current().changeState(peer, PeerState::connected);
  platform.time.runDue();
}

void HelperTest::disconnect(const PeerID& peer) {
  platform.peerLink.current().changeState(peer, PeerState::notConnected);
  platform.time.runDue();
}

}  // namespace torvane
