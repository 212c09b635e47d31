#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

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

  // Devices that were paired in an earlier run, before the helper is launched.
  void remember(const std::map<std::string, std::string>& devices);
  // As the menu names them.
  [[nodiscard]] std::vector<std::string> pairedNames() const;
  [[nodiscard]] std::vector<std::string> connectedNames() const;
  [[nodiscard]] std::vector<std::string> menuTitles() const;
  // Runs the menu's entry of this title.
  void choose(const std::string& title);

  // As the status icon is while no engine runs.
  [[nodiscard]] bool isIconDimmed() const;

  // Whether the program answers a request for a challenge, as it does for the peers it has
  // admitted.
  bool serves(const PeerID& peer);

  void connect(const PeerID& peer);
  void disconnect(const PeerID& peer);
};

}  // namespace torvane
