#include <functional>

#include "fakes/helper_test.h"
#include "fakes/part_test.h"
#include "peer/invitations.h"
#include "support/signing_device.h"

namespace torvane {
namespace {

// Who is answered how, seen from outside: by the invitations' answers, the alerts and what is
// stored.
class PairingRules : public HelperTest {
 protected:
  static constexpr int kPair = kAlertFirstButton;
  static constexpr int kIgnore = kAlertFirstButton + 1;

  void SetUp() override { launch(); }

  std::shared_ptr<std::vector<InvitationAnswer>> inviteAs(const std::string& name,
                                                          std::uint8_t seed) {
    return invite(platform.peerLink.newPeer(name), seed);
  }
  // Answers the alerts to come, in turn.
  void answerWith(std::initializer_list<int> answers) {
    platform.alerts.answers.assign(answers.begin(), answers.end());
  }
  JsonObject storedPairings() {
    return platform.defaults.stored.at("pairedDeviceKeys").as_object();
  }
  std::vector<std::string> alerts() {
    std::vector<std::string> messages;
    for (const auto& alert : platform.alerts.shown) messages.push_back(alert.message);
    return messages;
  }
};

TEST_F(PairingRules, AnswersPairedAndIgnoredDevicesWhileAnAlertIsUp) {
  answerWith({kPair, kIgnore});
  inviteAs("Ann", 1);
  inviteAs("Eve", 2);
  bool wasAsked = false;
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “New”?") return;
    wasAsked = true;
    const auto paired = inviteAs("Ann", 1);
    ASSERT_EQ(paired->size(), 1U);
    EXPECT_TRUE(paired->at(0).accept);
    const auto ignored = inviteAs("Eve", 2);
    ASSERT_EQ(ignored->size(), 1U);
    EXPECT_FALSE(ignored->at(0).accept);
  };
  inviteAs("New", 3);
  EXPECT_TRUE(wasAsked);
}

TEST_F(PairingRules, ForgettingAllPairingsKeepsTheIgnoredDevicesIgnored) {
  answerWith({kPair, kIgnore, kAlertFirstButton});
  inviteAs("Ann", 1);
  inviteAs("Eve", 2);
  choose("Forget Paired Devices…");
  platform.alerts.shown.clear();
  EXPECT_FALSE(inviteAs("Eve", 2)->at(0).accept);
  EXPECT_TRUE(alerts().empty());
  inviteAs("Ann", 1);  // was forgotten
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
}

TEST_F(PairingRules, StoresAllPairedDevicesEachTime) {
  answerWith({kPair, kPair});
  inviteAs("Ann", 1);
  inviteAs("Bob", 2);
  EXPECT_EQ(storedPairings(), (JsonObject{{deviceKey(1), "Ann"}, {deviceKey(2), "Bob"}}));
}

TEST_F(PairingRules, StoresTheNameThatTheUserWasShown) {
  platform.alerts.whileUp = [&](const AlertContent&) { inviteAs("Renamed meanwhile", 1); };
  inviteAs("Ann", 1);
  EXPECT_EQ(alerts(), std::vector<std::string>{"Pair with “Ann”?"});
  EXPECT_EQ(storedPairings(), (JsonObject{{deviceKey(1), "Ann"}}));
}

TEST_F(PairingRules, KeepsThePairedNameWhenTheDeviceComesUnderAnother) {
  inviteAs("Ann", 1);
  EXPECT_TRUE(inviteAs("Somebody else", 1)->at(0).accept);
  inviteAs("Bob", 2);  // all are stored again
  EXPECT_EQ(storedPairings(), (JsonObject{{deviceKey(1), "Ann"}, {deviceKey(2), "Bob"}}));
}

class InvitationsAlone : public PartTest, private Invitations::Host {
 protected:
  PairingRegistry registry{platform.ports.defaults, main};
  AdmittedPeers admitted;
  Invitations invitations{
      {platform.ports.application, platform.ports.texts}, registry, admitted, *this, *this};
  const test::SigningDevice device{1};

  bool isAccepted() {
    bool result = false;
    invitations.handleInvitation(
        {platform.peerLink.newPeer("Ann"), device.rawKey()},
        [&result](bool accept, const std::shared_ptr<PeerSession>&) { result = accept; });
    return result;
  }

 private:
  std::shared_ptr<PeerSession> currentSession() const override { return nullptr; }
};

// As it is when a copy of the registry comes back that was made before the device was ignored.
TEST_F(InvitationsAlone, PairedCountsMoreThanIgnored) {
  platform.alerts.answers = {kAlertFirstButton + 1};
  EXPECT_FALSE(isAccepted());
  EXPECT_FALSE(isAccepted());
  registry.pair(device.deviceKey(), "Ann");
  EXPECT_TRUE(isAccepted());
}

// The device's first request may be there before the answer to its invitation has returned.
TEST_F(PairingRules, ServesAQueuedInvitersRequestAsSoonAsItIsAccepted) {
  const test::SigningDevice device(1);
  const PeerID peer = platform.peerLink.newPeer("Ann");
  std::size_t replies = 0;
  platform.peerLink.inviteAndRun(peer, device.rawKey(), [&](bool accept) {
    ASSERT_TRUE(accept);
    platform.peerLink.current().receive(peer, test::challengeRequest(7));
    platform.time.runDue();
    replies = platform.peerLink.current().sentTo(peer).size();
  });
  platform.time.runDue();
  EXPECT_EQ(replies, 1U);
}

}  // namespace
}  // namespace torvane
