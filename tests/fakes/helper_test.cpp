#include "fakes/helper_test.h"

#include <algorithm>

#include "protocol/base64.h"
#include "support/signing_device.h"

namespace torvane {
namespace {

// The titles of the indented entries behind this one.
std::vector<std::string> namesBelow(const std::vector<MenuItem>& menu, const std::string& title) {
  std::vector<std::string> names;
  auto entry = std::find_if(menu.begin(), menu.end(),
                            [&title](const MenuItem& item) { return item.title == title; });
  if (entry == menu.end()) return names;
  for (++entry; entry != menu.end() && entry->indentationLevel > 0; ++entry) {
    names.push_back(entry->title);
  }
  return names;
}

}  // namespace

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

void HelperTest::remember(const std::map<std::string, std::string>& devices) {
  JsonObject stored;
  for (const auto& [key, name] : devices) stored[key] = name;
  platform.defaults.stored["pairedDeviceKeys"] = stored;
}

std::vector<std::string> HelperTest::pairedNames() const {
  return namesBelow(helper->menuNeedsUpdate(), "Paired devices:");
}

std::vector<std::string> HelperTest::connectedNames() const {
  return namesBelow(helper->menuNeedsUpdate(), "Connected:");
}

std::vector<std::string> HelperTest::menuTitles() const {
  std::vector<std::string> titles;
  for (const auto& item : helper->menuNeedsUpdate()) titles.push_back(item.title);
  return titles;
}

void HelperTest::choose(const std::string& title) {
  const auto menu = helper->menuNeedsUpdate();
  const auto entry = std::find_if(menu.begin(), menu.end(), [&title](const MenuItem& item) {
    return item.title == title && item.action;
  });
  ASSERT_NE(entry, menu.end()) << title;
  entry->action();
  platform.time.runDue();
}

bool HelperTest::isIconDimmed() const {
  return platform.statusBar.shown.icons.back().appearsDisabled;
}

bool HelperTest::serves(const PeerID& peer) {
  const std::size_t before = platform.peerLink.current().sentTo(peer).size();
  platform.peerLink.current().receive(peer, test::challengeRequest(1));
  platform.time.runDue();
  return platform.peerLink.current().sentTo(peer).size() > before;
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
