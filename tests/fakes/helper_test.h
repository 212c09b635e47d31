#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "app/bridge_delegate.h"
#include "fakes/simulated_platform.h"

namespace torvane {

// A fixture with one helper on a simulated desktop.
class HelperTest : public testing::Test {
 protected:
  SimulatedPlatform platform;
  std::unique_ptr<BridgeDelegate> helper;

  HelperTest();
  ~HelperTest() override;

  // The helper as constructed, before it has launched.
  BridgeDelegate& construct();
  BridgeDelegate& launch();

  // 32 bytes that stand for a device's public key, and its device key.
  static Bytes rawKey(std::uint8_t seed);
  static std::string deviceKey(std::uint8_t seed);

  // A device invites, and the answers it has got so far.
  std::shared_ptr<std::vector<InvitationAnswer>> invite(const PeerID& peer, std::uint8_t seed);

  void connect(const PeerID& peer);
  void disconnect(const PeerID& peer);
};

}  // namespace torvane
