#include "fakes/helper_test.h"

namespace torvane {
namespace {

class Invitations : public HelperTest {
 protected:
  static constexpr int kPair = kAlertFirstButton;
  static constexpr int kIgnore = kAlertFirstButton + 1;

  void SetUp() override { launch(); }
  PeerID device(const std::string& name) { return platform.peerLink.newPeer(name); }
  std::vector<std::string> alerts() {
    std::vector<std::string> messages;
    for (const auto& alert : platform.alerts.shown) messages.push_back(alert.message);
    return messages;
  }
};

TEST_F(Invitations, AsksAboutANewDeviceWithItsName) {
  invite(device("Ann's iPad"), 1);
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  const AlertContent expected = {
      .message = "Pair with “Ann's iPad”?",
      .informativeText =
          "A device named “Ann's iPad” wants to control PowerPoint on this Mac. Pair it if it's "
          "yours — it will connect automatically from then on. You can forget paired devices from "
          "the menu bar icon.",
      .buttons = {"Pair", "Ignore"},
      .isGuarded = true};
  EXPECT_EQ(platform.alerts.shown[0], expected);
  EXPECT_EQ(platform.logged({"activate", "alert Pair with “Ann's iPad”?"}),
            (CallLog{"activate", "alert Pair with “Ann's iPad”?"}));
}

TEST_F(Invitations, PairAcceptsIntoTheCurrentSessionAndStoresTheDevice) {
  const auto answers = invite(device("Ann"), 1);
  ASSERT_EQ(answers->size(), 1U);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_EQ(answers->at(0).session, helper->session);
  EXPECT_EQ(helper->pairedDevices.at(deviceKey(1)), "Ann");
  const JsonObject stored = {{deviceKey(1), "Ann"}};
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(stored));
}

TEST_F(Invitations, PairedDeviceIsAcceptedWithoutAQuestion) {
  invite(device("Ann"), 1);
  platform.alerts.shown.clear();
  const auto answers = invite(device("Ann"), 1);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Invitations, RecordsThePairedDevicesKeyBeforeItAnswers) {
  helper->pair(deviceKey(1), "Ann");
  const auto peer = device("Ann");
  bool wasRecorded = false;
  helper->handleInvitation({peer, rawKey(1)}, [&](bool, const std::shared_ptr<PeerSession>&) {
    wasRecorded = helper->peerKeys.count(peer) == 1;
  });
  EXPECT_TRUE(wasRecorded);
}

TEST_F(Invitations, TwoFromOneDeviceShareOneAlertAndOneAnswer) {
  std::shared_ptr<std::vector<InvitationAnswer>> again;
  platform.alerts.whileUp = [&](const AlertContent&) { again = invite(device("Ann"), 1); };
  const auto answers = invite(device("Ann"), 1);
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(again->at(0).accept);
  EXPECT_EQ(answers->at(0).session, helper->session);
  EXPECT_EQ(again->at(0).session, helper->session);
  EXPECT_EQ(platform.logged({"store pairedDeviceKeys"}), CallLog{"store pairedDeviceKeys"});
  const JsonObject stored = {{deviceKey(1), "Ann"}};
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(stored));
  EXPECT_EQ(helper->peerKeys.size(), 2U);
}

TEST_F(Invitations, OfOneDeviceAreAnsweredInTheirOrder) {
  std::vector<int> answered;
  const auto inviteAgain = [&](int number) {
    platform.peerLink.inviteAndRun(device("Ann"), rawKey(1), [&answered, number](bool accept) {
      answered.push_back(accept ? number : -number);
    });
  };
  platform.alerts.whileUp = [&](const AlertContent&) {
    for (int number = 2; number <= 5; ++number) inviteAgain(number);
    platform.time.runDue();
  };
  inviteAgain(1);
  platform.time.runDue();
  EXPECT_EQ(answered, (std::vector<int>{1, 2, 3, 4, 5}));
}

// Keys are compared as the texts that they are stored as: 251 is "+/v7…", 1 is "AQEB…".
TEST_F(Invitations, WaitingDevicesAreAskedAboutInTheOrderOfTheirKeysTexts) {
  for (const bool firstComesFirst : {false, true}) {
    helper->forgetAllPairings();
    platform.alerts.shown.clear();
    platform.alerts.whileUp = [&](const AlertContent& alert) {
      if (alert.message != "Pair with “Middle”?") return;
      if (firstComesFirst) invite(device("First"), 251);
      invite(device("Last"), 1);
      if (!firstComesFirst) invite(device("First"), 251);
    };
    invite(device("Middle"), 5);
    EXPECT_EQ(alerts(), (std::vector<std::string>{"Pair with “Middle”?", "Pair with “First”?",
                                                  "Pair with “Last”?"}));
  }
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
}

TEST_F(Invitations, LatestNameOfAWaitingDeviceIsShown) {
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “Ann”?") return;
    invite(device("Old name"), 2);
    invite(device("New name"), 2);
  };
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts().back(), "Pair with “New name”?");
}

TEST_F(Invitations, DeviceWithoutACapturedNameIsCalledIPad) {
  helper->pendingInvites[deviceKey(1)];
  helper->presentNextPairingAlert();
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “iPad”?"});
  EXPECT_EQ(helper->pairedDevices.at(deviceKey(1)), "iPad");
}

TEST_F(Invitations, IgnoreRefusesEveryWaitingInvitationAndLaterOnesSilently) {
  platform.alerts.answers = {kIgnore};
  std::shared_ptr<std::vector<InvitationAnswer>> again;
  platform.alerts.whileUp = [&](const AlertContent&) { again = invite(device("Eve"), 1); };
  const auto answers = invite(device("Eve"), 1);
  const auto later = invite(device("Eve"), 1);
  for (const auto& list : {answers, again, later}) {
    ASSERT_EQ(list->size(), 1U);
    EXPECT_FALSE(list->at(0).accept);
    EXPECT_EQ(list->at(0).session, nullptr);
  }
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_TRUE(helper->peerKeys.empty());
}

TEST_F(Invitations, IgnoredDeviceIsAskedAboutAgainAfterARestart) {
  platform.alerts.answers = {kIgnore};
  invite(device("Eve"), 1);
  launch();
  invite(device("Eve"), 1);
  EXPECT_EQ(alerts().size(), 2U);
}

TEST_F(Invitations, AnyAnswerButTheFirstButtonIgnores) {
  platform.alerts.answers = {0};
  EXPECT_FALSE(invite(device("Eve"), 1)->at(0).accept);
  EXPECT_EQ(helper->ignoredDevices.count(deviceKey(1)), 1U);
}

TEST_F(Invitations, AcceptsIntoTheSessionThatIsCurrentWhenTheAnswerIsGiven) {
  platform.alerts.whileUp = [&](const AlertContent&) {
    const auto stranger = device("gone");
    connect(stranger);
    disconnect(stranger);  // the last peer has gone: the session is replaced
  };
  const auto answers = invite(device("Ann"), 1);
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(answers->at(0).session, platform.peerLink.sessions.back());
}

TEST_F(Invitations, OldClientIsRefusedFirstAndThenWarnedAbout) {
  std::shared_ptr<std::vector<InvitationAnswer>> answers;
  std::size_t answeredBeforeAlert = 0;
  platform.alerts.whileUp = [&](const AlertContent&) { answeredBeforeAlert = answers->size(); };
  answers = platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  const AlertContent expected = {
      .message = "“Relic” needs the new Torvane app",
      .informativeText =
          "That iPad is running an older Torvane that can no longer pair with this "
          "helper. Update the app on the iPad, then approve it here when it asks to "
          "pair again.",
      .buttons = {"OK"},
      .style = AlertContent::Style::warning};
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0], expected);
  EXPECT_EQ(answeredBeforeAlert, 1U);
  EXPECT_FALSE(answers->at(0).accept);
}

TEST_F(Invitations, WarningBringsTheProgramToTheFront) {
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  const CallLog expected = {"activate", "alert “Relic” needs the new Torvane app"};
  EXPECT_EQ(platform.logged(expected), expected);
}

TEST_F(Invitations, ContextThatIsNotAKeyCountsAsAnOldClient) {
  const auto answers = platform.peerLink.invite(device("Odd"), Bytes(31, 1));
  platform.time.runDue();
  EXPECT_FALSE(answers->at(0).accept);
  EXPECT_EQ(alerts(), std::vector<std::string>{"“Odd” needs the new Torvane app"});
}

TEST_F(Invitations, OldClientIsWarnedAboutOncePerName) {
  for (const char* name : {"Relic", "Relic", "Other", "Relic"}) {
    platform.peerLink.invite(device(name), std::nullopt);
    platform.time.runDue();
  }
  EXPECT_EQ(alerts(), (std::vector<std::string>{"“Relic” needs the new Torvane app",
                                                "“Other” needs the new Torvane app"}));
}

TEST_F(Invitations, OldClientDuringAPairingAlertIsRefusedWithoutAWarning) {
  std::shared_ptr<std::vector<InvitationAnswer>> refused;
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “Ann”?") return;
    refused = platform.peerLink.invite(device("Relic"), std::nullopt);
    platform.time.runDue();
    ASSERT_EQ(refused->size(), 1U);
    EXPECT_FALSE(refused->at(0).accept);
    EXPECT_EQ(refused->at(0).session, nullptr);
  };
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
  EXPECT_TRUE(helper->warnedLegacyClients.empty());
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  EXPECT_EQ(alerts().back(), "“Relic” needs the new Torvane app");
}

TEST_F(Invitations, DevicesThatInviteDuringAWarningAreAskedAboutAfterIt) {
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message == "“Relic” needs the new Torvane app") invite(device("Ann"), 1);
  };
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  EXPECT_EQ(alerts(),
            (std::vector<std::string>{"“Relic” needs the new Torvane app", "Pair with “Ann”?"}));
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
}

TEST_F(Invitations, ForgetAllAsksFirstAndCancelKeepsEverything) {
  helper->pair(deviceKey(1), "Ann");
  platform.alerts.answers = {kAlertFirstButton + 1};
  helper->forgetPairedDevices();
  const AlertContent expected = {
      .message = "Forget all paired devices?",
      .informativeText =
          "Each device will need to be approved again the next time it connects. "
          "Devices connected right now stay connected until they drop.",
      .buttons = {"Forget All", "Cancel"}};
  EXPECT_EQ(platform.alerts.shown.back(), expected);
  EXPECT_EQ(helper->pairedDevices.size(), 1U);
  EXPECT_EQ(platform.defaults.stored.count("pairedDeviceKeys"), 1U);
}

TEST_F(Invitations, ForgetAllBringsTheProgramToTheFront) {
  helper->forgetPairedDevices();
  const CallLog expected = {"activate", "alert Forget all paired devices?"};
  EXPECT_EQ(platform.logged(expected), expected);
}

TEST_F(Invitations, ForgetAllMeansAskingAgainWhileTheConnectedStay) {
  const auto ann = device("Ann");
  invite(ann, 1);
  connect(ann);
  const auto session = helper->session;
  helper->forgetPairedDevices();
  EXPECT_EQ(helper->session, session);
  EXPECT_EQ(platform.logged({"disconnect"}), CallLog{});
  EXPECT_TRUE(helper->pairedDevices.empty());
  EXPECT_EQ(platform.defaults.stored.count("pairedDeviceKeys"), 0U);
  EXPECT_EQ(helper->peerKeys.at(ann), deviceKey(1));
  EXPECT_EQ(helper->connectedPeers, std::vector<std::string>{"Ann"});
  platform.alerts.shown.clear();
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
}

TEST_F(Invitations, DigitsStandBehindTheNameInTheQuestionAndNowhereElse) {
  const auto ann = device("Ann's iPad");
  const auto answers = platform.peerLink.invite(ann, rawKey(1), "482 913");
  platform.time.runDue();
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Pair with “Ann's iPad · 482 913”?");
  EXPECT_EQ(platform.alerts.shown[0].informativeText.find(
                "A device named “Ann's iPad · 482 913” wants to control"),
            0U);
  EXPECT_TRUE(answers->at(0).accept);
  const JsonObject stored = {{deviceKey(1), "Ann's iPad"}};
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(stored));
  connect(ann);
  EXPECT_EQ(helper->connectedPeers, std::vector<std::string>{"Ann's iPad"});
}

TEST_F(Invitations, PairedDeviceIsNotAskedAboutForItsDigits) {
  invite(device("Ann"), 1);
  platform.alerts.shown.clear();
  const auto answers = platform.peerLink.invite(device("Ann"), rawKey(1), "482 913");
  platform.time.runDue();
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Invitations, DigitsOfAWaitingDeviceAreThoseOfItsFirstInvitation) {
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “Ann”?") return;
    for (const char* digits : {"111 111", "222 222", "333 333"}) {
      platform.peerLink.invite(device("Bob"), rawKey(2), digits);
    }
    platform.time.runDue();
  };
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts().back(), "Pair with “Bob · 111 111”?");
}

TEST_F(Invitations, InvitationWithOtherDigitsDuringItsQuestionIsAnsweredWithIt) {
  std::shared_ptr<std::vector<InvitationAnswer>> again;
  platform.alerts.whileUp = [&](const AlertContent&) {
    again = platform.peerLink.invite(device("Ann"), rawKey(1), "222 222");
    platform.time.runDue();
  };
  const auto answers = platform.peerLink.invite(device("Ann"), rawKey(1), "111 111");
  platform.time.runDue();
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann · 111 111”?"});
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(again->at(0).accept);
}

TEST_F(Invitations, DigitsAreForgottenWithTheAnswer) {
  platform.peerLink.invite(device("Ann"), rawKey(1), "111 111");
  platform.time.runDue();
  helper->forgetAllPairings();
  platform.peerLink.invite(device("Ann"), rawKey(1), "222 222");
  platform.time.runDue();
  helper->forgetAllPairings();
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts(), (std::vector<std::string>{"Pair with “Ann · 111 111”?",
                                                "Pair with “Ann · 222 222”?", "Pair with “Ann”?"}));
}

TEST_F(Invitations, EveryInvitationIsAnsweredExactlyOnceInAFlood) {
  std::vector<std::shared_ptr<std::vector<InvitationAnswer>>> all;
  for (int i = 0; i < 200; ++i) {
    all.push_back(platform.peerLink.invite(device("Flood"), rawKey(static_cast<std::uint8_t>(i))));
  }
  platform.time.runDue();
  for (const auto& answers : all) EXPECT_EQ(answers->size(), 1U);
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
  EXPECT_TRUE(helper->pendingInvites.empty());
  EXPECT_TRUE(helper->inviteNames.empty());
}

}  // namespace
}  // namespace torvane
