#include "fakes/helper_test.h"

namespace torvane {
namespace {

class PairingRegistry : public HelperTest {};

TEST_F(PairingRegistry, LoadsTheStoredDevices) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{"key", "Ann"}};
  construct();
  EXPECT_EQ(helper->pairedDevices, (std::map<std::string, std::string>{{"key", "Ann"}}));
}

TEST_F(PairingRegistry, OneValueThatIsNotTextMakesAnEmptyRegistry) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{"key", "Ann"}, {"other", 7}};
  construct();
  EXPECT_TRUE(helper->pairedDevices.empty());
}

TEST_F(PairingRegistry, StoredValueThatIsNoDictionaryMakesAnEmptyRegistry) {
  platform.defaults.stored["pairedDeviceKeys"] = "Ann";
  construct();
  EXPECT_TRUE(helper->pairedDevices.empty());
}

TEST_F(PairingRegistry, PairingAgainKeepsOneEntryWithTheLatestName) {
  construct();
  helper->pair("key", "Old");
  helper->pair("key", "New");
  EXPECT_EQ(helper->pairedDevices, (std::map<std::string, std::string>{{"key", "New"}}));
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(JsonObject{{"key", "New"}}));
}

TEST_F(PairingRegistry, PairedDevicesSurviveARestart) {
  construct();
  helper->pair(deviceKey(1), "Ann");
  construct();
  EXPECT_TRUE(helper->isPaired(deviceKey(1)));
  EXPECT_FALSE(helper->isPaired(deviceKey(2)));
}

TEST_F(PairingRegistry, LinkKnowsTheKeysThatWereStored) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{deviceKey(1), "Ann"}};
  launch();
  EXPECT_TRUE(platform.peerLink.registered->contains(rawKey(1)));
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(2)));
}

TEST_F(PairingRegistry, LinkKnowsNoKeyOfARegistryThatIsNotTrusted) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{deviceKey(1), "Ann"}, {"other", 7}};
  launch();
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(1)));
}

TEST_F(PairingRegistry, LinkLearnsOfEachKeyThatIsPairedAndOfAllThatAreForgotten) {
  launch();
  invite(platform.peerLink.newPeer("Ann"), 1);
  EXPECT_TRUE(platform.peerLink.registered->contains(rawKey(1)));
  platform.alerts.answers = {kAlertFirstButton + 1};
  invite(platform.peerLink.newPeer("Eve"), 2);
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(2)));
  helper->forgetPairedDevices();
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(1)));
}

// The link asks for the key by the time that the accepted device can invite again.
TEST_F(PairingRegistry, LinkKnowsANewKeyBeforeItsInvitationIsAnswered) {
  launch();
  bool wasKnown = false;
  helper->handleInvitation(platform.peerLink.newPeer("Ann"), rawKey(1),
                           [&](bool accept, const std::shared_ptr<PeerSession>&) {
                             wasKnown = accept && platform.peerLink.registered->contains(rawKey(1));
                           });
  EXPECT_TRUE(wasKnown);
}

}  // namespace
}  // namespace torvane
