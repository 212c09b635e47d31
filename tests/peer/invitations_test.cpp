#include "fakes/helper_test.h"

namespace torvane {
namespace {

class Inviting : public HelperTest {
 protected:
  static constexpr int kPair = kAlertFirstButton;
  static constexpr int kIgnore = kAlertFirstButton + 1;

  void SetUp() override { launch(); }
  PeerID device(const std::string& name) { return platform.peerLink.newPeer(name); }
  std::shared_ptr<PeerSession> session() { return platform.peerLink.sessions.back(); }
  std::vector<std::string> alerts() {
    std::vector<std::string> messages;
    for (const auto& alert : platform.alerts.shown) messages.push_back(alert.message);
    return messages;
  }
};

TEST_F(Inviting, AsksAboutANewDeviceWithItsName) {
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

TEST_F(Inviting, PairAcceptsIntoTheCurrentSessionAndStoresTheDevice) {
  const auto answers = invite(device("Ann"), 1);
  ASSERT_EQ(answers->size(), 1U);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_EQ(answers->at(0).session, session());
  EXPECT_EQ(pairedNames(), std::vector<std::string>{"Ann"});
  const JsonObject stored = {{deviceKey(1), "Ann"}};
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(stored));
}

TEST_F(Inviting, PairedDeviceIsAcceptedWithoutAQuestion) {
  invite(device("Ann"), 1);
  platform.alerts.shown.clear();
  const auto answers = invite(device("Ann"), 1);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Inviting, AdmitsAPairedDeviceBeforeItAnswers) {
  invite(device("Ann"), 1);
  const auto peer = device("Ann");
  bool wasServed = false;
  platform.peerLink.inviteAndRun(peer, rawKey(1), [&](bool) { wasServed = serves(peer); });
  platform.time.runDue();
  EXPECT_TRUE(wasServed);
}

TEST_F(Inviting, TwoFromOneDeviceShareOneAlertAndOneAnswer) {
  const std::vector<PeerID> peers = {device("Ann"), device("Ann")};
  std::shared_ptr<std::vector<InvitationAnswer>> again;
  platform.alerts.whileUp = [&](const AlertContent&) { again = invite(peers[1], 1); };
  const auto answers = invite(peers[0], 1);
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(again->at(0).accept);
  EXPECT_EQ(answers->at(0).session, session());
  EXPECT_EQ(again->at(0).session, session());
  EXPECT_EQ(platform.logged({"store pairedDeviceKeys"}), CallLog{"store pairedDeviceKeys"});
  const JsonObject stored = {{deviceKey(1), "Ann"}};
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(stored));
  EXPECT_TRUE(serves(peers[0]) && serves(peers[1]));
}

TEST_F(Inviting, OfOneDeviceAreAnsweredInTheirOrder) {
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
TEST_F(Inviting, WaitingDevicesAreAskedAboutInTheOrderOfTheirKeysTexts) {
  for (const bool firstComesFirst : {false, true}) {
    if (firstComesFirst) choose("Forget Paired Devices…");
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

TEST_F(Inviting, LatestNameOfAWaitingDeviceIsShown) {
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “Ann”?") return;
    invite(device("Old name"), 2);
    invite(device("New name"), 2);
  };
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts().back(), "Pair with “New name”?");
}

TEST_F(Inviting, IgnoreRefusesEveryWaitingInvitationAndLaterOnesSilently) {
  platform.alerts.answers = {kIgnore};
  const std::vector<PeerID> peers = {device("Eve"), device("Eve"), device("Eve")};
  std::shared_ptr<std::vector<InvitationAnswer>> again;
  platform.alerts.whileUp = [&](const AlertContent&) { again = invite(peers[1], 1); };
  const auto answers = invite(peers[0], 1);
  const auto later = invite(peers[2], 1);
  for (const auto& list : {answers, again, later}) {
    ASSERT_EQ(list->size(), 1U);
    EXPECT_FALSE(list->at(0).accept);
    EXPECT_EQ(list->at(0).session, nullptr);
  }
  EXPECT_EQ(alerts().size(), 1U);
  for (const auto& peer : peers) EXPECT_FALSE(serves(peer));
}

TEST_F(Inviting, IgnoredDeviceIsAskedAboutAgainAfterARestart) {
  platform.alerts.answers = {kIgnore};
  invite(device("Eve"), 1);
  launch();
  invite(device("Eve"), 1);
  EXPECT_EQ(alerts().size(), 2U);
}

TEST_F(Inviting, AnyAnswerButTheFirstButtonIgnores) {
  platform.alerts.answers = {0};
  EXPECT_FALSE(invite(device("Eve"), 1)->at(0).accept);
  EXPECT_FALSE(invite(device("Eve"), 1)->at(0).accept);
  EXPECT_EQ(alerts().size(), 1U);
}

TEST_F(Inviting, AcceptsIntoTheSessionThatIsCurrentWhenTheAnswerIsGiven) {
  platform.alerts.whileUp = [&](const AlertContent&) {
    const auto stranger = device("gone");
    connect(stranger);
    disconnect(stranger);  // the last peer has gone: the session is replaced
  };
  const auto answers = invite(device("Ann"), 1);
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(answers->at(0).session, platform.peerLink.sessions.back());
}

TEST_F(Inviting, OldClientIsRefusedFirstAndThenWarnedAbout) {
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

TEST_F(Inviting, WarningBringsTheProgramToTheFront) {
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  const CallLog expected = {"activate", "alert “Relic” needs the new Torvane app"};
  EXPECT_EQ(platform.logged(expected), expected);
}

TEST_F(Inviting, ContextThatIsNotAKeyCountsAsAnOldClient) {
  const auto answers = platform.peerLink.invite(device("Odd"), Bytes(31, 1));
  platform.time.runDue();
  EXPECT_FALSE(answers->at(0).accept);
  EXPECT_EQ(alerts(), std::vector<std::string>{"“Odd” needs the new Torvane app"});
}

TEST_F(Inviting, OldClientIsWarnedAboutOncePerName) {
  for (const char* name : {"Relic", "Relic", "Other", "Relic"}) {
    platform.peerLink.invite(device(name), std::nullopt);
    platform.time.runDue();
  }
  EXPECT_EQ(alerts(), (std::vector<std::string>{"“Relic” needs the new Torvane app",
                                                "“Other” needs the new Torvane app"}));
}

TEST_F(Inviting, OldClientDuringAPairingAlertIsRefusedWithoutAWarning) {
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
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  EXPECT_EQ(alerts().back(), "“Relic” needs the new Torvane app");
}

TEST_F(Inviting, DevicesThatInviteDuringAWarningAreAskedAboutAfterIt) {
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message == "“Relic” needs the new Torvane app") invite(device("Ann"), 1);
  };
  platform.peerLink.invite(device("Relic"), std::nullopt);
  platform.time.runDue();
  EXPECT_EQ(alerts(),
            (std::vector<std::string>{"“Relic” needs the new Torvane app", "Pair with “Ann”?"}));
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
}

TEST_F(Inviting, ForgetAllAsksFirstAndCancelKeepsEverything) {
  invite(device("Ann"), 1);
  platform.alerts.answers = {kAlertFirstButton + 1};
  choose("Forget Paired Devices…");
  const AlertContent expected = {
      .message = "Forget all paired devices?",
      .informativeText =
          "Each device will need to be approved again the next time it connects. "
          "Devices connected right now stay connected until they drop.",
      .buttons = {"Forget All", "Cancel"}};
  EXPECT_EQ(platform.alerts.shown.back(), expected);
  EXPECT_EQ(pairedNames().size(), 1U);
  EXPECT_EQ(platform.defaults.stored.count("pairedDeviceKeys"), 1U);
}

TEST_F(Inviting, ForgetAllBringsTheProgramToTheFront) {
  invite(device("Ann"), 1);
  platform.log.clear();
  choose("Forget Paired Devices…");
  const CallLog expected = {"activate", "alert Forget all paired devices?"};
  EXPECT_EQ(platform.logged(expected), expected);
}

TEST_F(Inviting, ForgetAllMeansAskingAgainWhileTheConnectedStay) {
  const auto ann = device("Ann");
  invite(ann, 1);
  connect(ann);
  choose("Forget Paired Devices…");
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
  EXPECT_EQ(platform.logged({"disconnect"}), CallLog{});
  EXPECT_TRUE(pairedNames().empty());
  EXPECT_EQ(platform.defaults.stored.count("pairedDeviceKeys"), 0U);
  EXPECT_TRUE(serves(ann));
  EXPECT_EQ(connectedNames(), std::vector<std::string>{"Ann"});
  platform.alerts.shown.clear();
  invite(device("Ann"), 1);
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
}

TEST_F(Inviting, DigitsStandBehindTheNameInTheQuestionAndNowhereElse) {
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
  EXPECT_EQ(connectedNames(), std::vector<std::string>{"Ann's iPad"});
}

TEST_F(Inviting, PairedDeviceIsNotAskedAboutForItsDigits) {
  invite(device("Ann"), 1);
  platform.alerts.shown.clear();
  const auto answers = platform.peerLink.invite(device("Ann"), rawKey(1), "482 913");
  platform.time.runDue();
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Inviting, DigitsOfAWaitingDeviceAreThoseOfItsFirstInvitation) {
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

TEST_F(Inviting, InvitationWithOtherDigitsDuringItsQuestionIsAnsweredWithIt) {
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

TEST_F(Inviting, DigitsAreForgottenWithTheAnswer) {
  platform.peerLink.invite(device("Ann"), rawKey(1), "111 111");
  platform.time.runDue();
  choose("Forget Paired Devices…");
  platform.peerLink.invite(device("Ann"), rawKey(1), "222 222");
  platform.time.runDue();
  choose("Forget Paired Devices…");
  invite(device("Ann"), 1);
  const std::string forget = "Forget all paired devices?";
  EXPECT_EQ(alerts(),
            (std::vector<std::string>{"Pair with “Ann · 111 111”?", forget,
                                      "Pair with “Ann · 222 222”?", forget, "Pair with “Ann”?"}));
}

TEST_F(Inviting, EveryInvitationIsAnsweredExactlyOnceInAFlood) {
  std::vector<std::shared_ptr<std::vector<InvitationAnswer>>> all;
  for (int i = 0; i < 200; ++i) {
    all.push_back(platform.peerLink.invite(device("Flood"), rawKey(static_cast<std::uint8_t>(i))));
  }
  platform.time.runDue();
  for (const auto& answers : all) EXPECT_EQ(answers->size(), 1U);
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
  EXPECT_EQ(pairedNames().size(), 200U);
}

}  // namespace
}  // namespace torvane
