#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "app/bridge_delegate.h"
#include "fakes/simulated_platform.h"
#include "protocol/base64.h"

namespace torvane {

// A fixture with one helper on a simulated desktop.
class HelperTest : public testing::Test {
 protected:
  SimulatedPlatform platform;
  std::unique_ptr<BridgeDelegate> helper;

  // The helper as constructed, before it has launched.
  BridgeDelegate& construct() {
    helper = std::make_unique<BridgeDelegate>(platform.ports);
    return *helper;
  }
  BridgeDelegate& launch() {
    construct().applicationDidFinishLaunching();
    platform.time.runDue();
    return *helper;
  }

  // 32 bytes that stand for a device's public key, and its device key.
  static Bytes rawKey(std::uint8_t seed) { return Bytes(32, seed); }
  static std::string deviceKey(std::uint8_t seed) { return base64Encode(rawKey(seed)); }

  // A device invites, and the answers it has got so far.
  std::shared_ptr<std::vector<InvitationAnswer>> invite(const PeerID& peer, std::uint8_t seed) {
    auto answers = platform.peerLink.invite(peer, rawKey(seed));
    platform.time.runDue();
    return answers;
  }

  void connect(const PeerID& peer) {
    platform.peerLink.current().changeState(peer, PeerState::connected);
    platform.time.runDue();
  }
  void disconnect(const PeerID& peer) {
    platform.peerLink.current().changeState(peer, PeerState::notConnected);
    platform.time.runDue();
  }
};

}  // namespace torvane
