#include "peer/pairing_registry.h"

#include "fakes/helper_test.h"
#include "fakes/part_test.h"

namespace torvane {
namespace {

class Registry : public PartTest {
 protected:
  PairingRegistry open() { return PairingRegistry(platform.ports.defaults, main); }
  JsonValue& stored() { return platform.defaults.stored[PairingRegistry::pairedKey]; }
};

TEST_F(Registry, LoadsTheStoredDevices) {
  stored() = JsonObject{{"key", "Ann"}};
  EXPECT_TRUE(open().isPaired("key"));
  EXPECT_EQ(open().names(), std::vector<std::string>{"Ann"});
}

TEST_F(Registry, OneValueThatIsNotTextMakesAnEmptyRegistry) {
  stored() = JsonObject{{"key", "Ann"}, {"other", 7}};
  EXPECT_FALSE(open().isPaired("key"));
  EXPECT_TRUE(open().names().empty());
}

TEST_F(Registry, StoredValueThatIsNoDictionaryMakesAnEmptyRegistry) {
  stored() = "Ann";
  EXPECT_TRUE(open().names().empty());
}

TEST_F(Registry, PairingAgainKeepsOneEntryWithTheLatestName) {
  PairingRegistry registry = open();
  registry.pair("key", "Old");
  registry.pair("key", "New");
  EXPECT_EQ(registry.names(), std::vector<std::string>{"New"});
  EXPECT_EQ(stored(), JsonValue(JsonObject{{"key", "New"}}));
}

TEST_F(Registry, PairedDevicesSurviveARestart) {
  open().pair("key", "Ann");
  EXPECT_TRUE(open().isPaired("key"));
  EXPECT_FALSE(open().isPaired("other"));
}

using KeysForTheLink = HelperTest;

TEST_F(KeysForTheLink, LinkKnowsTheKeysThatWereStored) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{deviceKey(1), "Ann"}};
  launch();
  EXPECT_TRUE(platform.peerLink.registered->contains(rawKey(1)));
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(2)));
}

TEST_F(KeysForTheLink, LinkKnowsNoKeyOfARegistryThatIsNotTrusted) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{deviceKey(1), "Ann"}, {"other", 7}};
  launch();
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(1)));
}

TEST_F(KeysForTheLink, LinkLearnsOfEachKeyThatIsPairedAndOfAllThatAreForgotten) {
  launch();
  invite(platform.peerLink.newPeer("Ann"), 1);
  EXPECT_TRUE(platform.peerLink.registered->contains(rawKey(1)));
  platform.alerts.answers = {kAlertFirstButton + 1};
  invite(platform.peerLink.newPeer("Eve"), 2);
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(2)));
  choose("Forget Paired Devices…");
  EXPECT_FALSE(platform.peerLink.registered->contains(rawKey(1)));
}

// The link asks for the key by the time that the accepted device can invite again.
TEST_F(KeysForTheLink, LinkKnowsANewKeyBeforeItsInvitationIsAnswered) {
  launch();
  bool wasKnown = false;
  platform.peerLink.inviteAndRun(platform.peerLink.newPeer("Ann"), rawKey(1), [&](bool accept) {
    wasKnown = accept && platform.peerLink.registered->contains(rawKey(1));
  });
  platform.time.runDue();
  EXPECT_TRUE(wasKnown);
}

class PairingOnAFullDisk : public HelperTest {
 protected:
  void SetUp() override {
    platform.runEngine();
    launch();
    platform.alerts.shown.clear();
    platform.defaults.diskIsFull = true;
  }
  JsonValue onDisk() { return platform.defaults.onDisk["pairedDeviceKeys"]; }
  std::vector<std::string> alerts() {
    std::vector<std::string> texts;
    for (const auto& alert : platform.alerts.shown) texts.push_back(alert.message);
    return texts;
  }
};

TEST_F(PairingOnAFullDisk, IsToldInFrontAfterTheDeviceHasItsAnswer) {
  const auto answers = platform.peerLink.invite(platform.peerLink.newPeer("Ann"), rawKey(1));
  std::vector<std::size_t> answered;
  platform.alerts.whileUp = [&](const AlertContent&) { answered.push_back(answers->size()); };
  platform.log.clear();
  platform.time.runDue();
  EXPECT_EQ(answered, (std::vector<std::size_t>{0, 1}));
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_EQ(platform.logged({"activate"}).size(), 2U);
  ASSERT_EQ(alerts(), (std::vector<std::string>{"Pair with “Ann”?", "Torvane P2P Helper"}));
  EXPECT_EQ(platform.alerts.shown[1],
            (AlertContent{.message = "Torvane P2P Helper",
                          .informativeText =
                              "The pairing with “Ann” could not be saved. Is the disk full?\n\n"
                              "It holds until this app quits, and will be saved as soon as "
                              "there is room."}));
}

TEST_F(PairingOnAFullDisk, IsSavedAsSoonAsThereIsRoom) {
  invite(platform.peerLink.newPeer("Ann"), 1);
  platform.time.advance(60);
  EXPECT_EQ(onDisk(), JsonValue());
  platform.defaults.diskIsFull = false;
  platform.time.advance(5);
  EXPECT_EQ(onDisk(), JsonValue(JsonObject{{deviceKey(1), "Ann"}}));
  EXPECT_EQ(platform.defaults.onDisk["didShowWelcome"], JsonValue(true));
  EXPECT_EQ(alerts().size(), 2U) << "told once";
}

TEST_F(PairingOnAFullDisk, IsTriedAgainOnOneTimerHoweverManyThereAre) {
  for (std::uint8_t i = 1; i <= 3; ++i) invite(platform.peerLink.newPeer("Ann"), i);
  const auto timers = platform.mainQueue.once.size();
  platform.time.advance(50);
  EXPECT_LE(platform.mainQueue.once.size(), timers + 11);
  EXPECT_EQ(alerts().size(), 6U);
}

TEST_F(PairingOnAFullDisk, IsTriedALastTimeAtQuit) {
  invite(platform.peerLink.newPeer("Ann"), 1);
  platform.defaults.diskIsFull = false;
  helper->applicationWillTerminate();
  EXPECT_EQ(onDisk(), JsonValue(JsonObject{{deviceKey(1), "Ann"}}));
}

TEST_F(PairingOnAFullDisk, NextDeviceIsAskedAboutAfterItIsTold) {
  platform.alerts.whileUp = [this](const AlertContent& alert) {
    if (alert.message != "Torvane P2P Helper" || alerts().size() > 2) return;
    invite(platform.peerLink.newPeer("Bob"), 2);
    EXPECT_EQ(platform.alerts.up, 1);
  };
  invite(platform.peerLink.newPeer("Ann"), 1);
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
  EXPECT_EQ(alerts(), (std::vector<std::string>{"Pair with “Ann”?", "Torvane P2P Helper",
                                                "Pair with “Bob”?", "Torvane P2P Helper"}));
}

TEST_F(PairingOnAFullDisk, ForgettingIsToldAndMadeGood) {
  platform.defaults.diskIsFull = false;
  invite(platform.peerLink.newPeer("Ann"), 1);
  platform.alerts.shown.clear();
  platform.defaults.diskIsFull = true;
  choose("Forget Paired Devices…");
  EXPECT_EQ(alerts(),
            (std::vector<std::string>{"Forget all paired devices?", "Torvane P2P Helper"}));
  EXPECT_EQ(
      platform.alerts.shown.back().informativeText,
      "That the paired devices are forgotten could not be saved. Is the disk full?\n\nIt holds "
      "until this app quits, and will be saved as soon as there is room.");
  EXPECT_TRUE(pairedNames().empty());
  EXPECT_NE(onDisk(), JsonValue());
  platform.defaults.diskIsFull = false;
  platform.time.advance(5);
  EXPECT_EQ(platform.defaults.onDisk.count("pairedDeviceKeys"), 0U);
}

TEST_F(PairingOnAFullDisk, NothingIsToldWhereItIsSaved) {
  platform.defaults.diskIsFull = false;
  invite(platform.peerLink.newPeer("Ann"), 1);
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
  EXPECT_EQ(onDisk(), JsonValue(JsonObject{{deviceKey(1), "Ann"}}));
}

}  // namespace
}  // namespace torvane
