// The program as an iPad sees it.

#include "mac/mac_program.h"

namespace torvane {
namespace {

class MacPeers : public MacProgram {};

TEST_F(MacPeers, AcceptsAnInvitationIntoTheCurrentSessionWhenTheUserPairs) {
  run([&] {
    std::vector<fake::Alert> alerts;
    system().onAlert = [&](const fake::Alert& alert) {
      alerts.push_back(alert);
      return 1000;
    };
    const auto answer = invite(pad(), device_);
    EXPECT_EQ(*answer, "");  // on the main queue only
    fake::settle();
    EXPECT_EQ(*answer, "yes 0");
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].message, "Pair with “Zoë's iPad”?");
    EXPECT_EQ(alerts[0].buttons, (std::vector<std::string>{"Pair", "Ignore"}));
    EXPECT_EQ(alerts[0].style, 1U);
    EXPECT_NE(system().defaults["pairedDeviceKeys"], nil);
  });
}

TEST_F(MacPeers, RefusesWhenTheUserDoesNotPair) {
  for (const int closed : {1001, -1000, -1001}) {
    run([&] {
      system().onAlert = [&](const fake::Alert&) { return closed; };
      const auto answer = invite(pad(), device_);
      fake::settle();
      EXPECT_EQ(*answer, "no");
    });
  }
}

TEST_F(MacPeers, GoesOnWithQueuedWorkWhileAnAlertIsUp) {
  run([&] {
    int asked = 0;
    std::shared_ptr<std::string> second;
    system().onAlert = [&](const fake::Alert&) {
      if (++asked == 1) {
        second = invite(pad(), device_);
        fake::settle();  // the alert's own loop
      }
      return 1000;
    };
    const auto first = invite(pad(), device_);
    fake::settle();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(*first, "yes 0");
    EXPECT_EQ(*second, "yes 0");
  });
}

TEST_F(MacPeers, RunsWhatWasQueuedBeforeTheAlertInsideItsLoop) {
  run([&] {
    MCPeerID* peer = pad();
    bool sawIcon = false;
    system().onAlert = [&](const fake::Alert&) {
      fake::settle();
      sawIcon = shownBy(system().statusItem).find("iPad connected") != std::string::npos;
      return 1001;
    };
    const auto answer = invite(peer, device_);
    system().connected.push_back(peer);
    fake::elsewhere([&] {
      [sessionEvents(0) session:system().sessions[0]
                           peer:peer
                 didChangeState:MCSessionStateConnected];
    });
    fake::settle();
    EXPECT_TRUE(sawIcon);
  });
}

TEST_F(MacPeers, AnswersARequestToItsPeerAloneAndReliably) {
  run([&] {
    MCPeerID* peer = pad();
    MCPeerID* other = [[MCPeerID alloc] initWithDisplayName:@"Other"];
    const auto answer = invite(peer, device_);
    fake::settle();
    change(other, MCSessionStateConnected);
    change(peer, MCSessionStateConnected);
    receive(peer, test::challengeRequest(1));
    EXPECT_EQ(lastLine().find("send"), std::string::npos);  // not on the framework's queue
    fake::settle();
    const std::string line = lastLine();
    EXPECT_EQ(line.find("send mode 0 to [Zoë's iPad] {\"id\":1,\"status\":200"), 0U) << line;

    const std::string challenge = line.substr(line.find("\"challenge\":\"") + 13, 36);
    receive(peer, device_.envelope(challenge,
                                   {{"id", 2},
                                    {"path", "/api/next?x=1"},
                                    {"method", "POST"},
                                    {"contentType", "application/json"}},
                                   asBytes("{}")));
    fake::settle();
    const fake::Request& request = system().requests.back();
    EXPECT_EQ(request.url, "http://127.0.0.1:8484/api/next?x=1");
    EXPECT_EQ(request.method + " " + request.body, "POST {}");
    EXPECT_EQ(request.headers.at("Content-Type"), "application/json");
    EXPECT_EQ(request.timeout, 60);
    EXPECT_TRUE(said("session direct keeps nothing idle 120 total 300"));
    fake::respond(request, 201, "text/plain", "done");
    EXPECT_EQ(lastLine(), "send mode 0 to [Zoë's iPad] "
                          "{\"id\":2,\"status\":201,\"contentType\":\"text/plain\"}done");
  });
}

TEST_F(MacPeers, LosesWhatIsSentBeyondAPeersShareUntilItIsAnswered) {
  run([&] {
    MCPeerID* peer = pad();
    const auto answer = invite(peer, device_);
    fake::settle();
    change(peer, MCSessionStateConnected);
    receive(peer, test::challengeRequest(1));
    fake::settle();
    const std::string challenge = lastLine().substr(lastLine().find("\"challenge\":\"") + 13, 36);
    const auto send = [&](std::int64_t id, std::size_t bytes) {
      receive(peer, device_.envelope(challenge, {{"id", id}, {"path", "/long"}}, Bytes(bytes)));
      fake::settle();
      return std::count_if(system().requests.begin(), system().requests.end(),
                           [](const auto& r) { return r.url == "http://127.0.0.1:8484/long"; });
    };
    EXPECT_EQ(send(2, std::size_t{9} << 20), 1);
    const fake::Request first = system().requests.back();
    EXPECT_EQ(send(3, std::size_t{9} << 20), 2);
    EXPECT_EQ(send(4, 1), 2);
    fake::respond(first, 200, "text/plain", "done");
    EXPECT_EQ(send(5, 1), 3);
  });
}

TEST_F(MacPeers, IgnoresEventsOfAReplacedSession) {
  run([&] {
    MCPeerID* peer = pad();
    const auto first = system().sessions[0];
    id<MCSessionDelegate> events = first.delegate;
    change(peer, MCSessionStateConnected);
    change(peer, MCSessionStateNotConnected);
    ASSERT_EQ(system().sessions.size(), 2U);
    EXPECT_EQ(first.delegate, nil);
    EXPECT_FALSE(said("disconnect"));  // released, which is all
    forgetLog();
    [events session:first peer:peer didChangeState:MCSessionStateConnected];
    const char bytes[] = {0, 0, 0, 0};
    [events session:first didReceiveData:[NSData dataWithBytes:bytes length:4] fromPeer:peer];
    fake::settle();
    EXPECT_TRUE(system().log.empty());
  });
}

TEST_F(MacPeers, DoesNotLetARequestLeaveTheEngine) {
  run([&] {
    MCPeerID* peer = pad();
    const auto answer = invite(peer, device_);
    fake::settle();
    change(peer, MCSessionStateConnected);
    receive(peer, test::challengeRequest(1));
    fake::settle();
    const std::string challenge = lastLine().substr(lastLine().find("\"challenge\":\"") + 13, 36);
    const auto before = system().requests.size();
    receive(peer, device_.envelope(challenge, {{"id", 2}, {"path", "@evil/x"}}));
    fake::settle();
    fake::drainQueues();
    EXPECT_EQ(system().requests.size(), before);
    EXPECT_NE(lastLine().find("\"status\":502"), std::string::npos) << lastLine();
  });
}

TEST_F(MacPeers, TellsWhyItIsNotAdvertised) {
  run([&] {
    const auto firstLine = [] {
      NSMenu* menu = system().statusItem.menu;
      [menu.delegate menuNeedsUpdate:menu];
      return fake::title(system().items.at(0));
    };
    EXPECT_EQ(firstLine(), "Advertising as “Zoë's Mac” — open the iPad app");
    id<MCNearbyServiceAdvertiserDelegate> events = system().advertiser.delegate;
    fake::elsewhere([&] {
      [events advertiser:system().advertiser didNotStartAdvertisingPeer:fake::error("No radio.")];
    });
    fake::settle();
    EXPECT_EQ(firstLine(), "Not advertising: No radio.");
    EXPECT_NE(shownBy(system().statusItem).find("waiting"), std::string::npos);
  });
}

TEST_F(MacPeers, LetsNoFloodOfInvitationsThrough) {
  run([&] {
    int asked = 0;
    system().onAlert = [&](const fake::Alert&) {
      ++asked;
      return 1001;
    };
    int refusedAtOnce = 0;
    for (int i = 0; i < 40; ++i) {
      const test::SigningDevice stranger(static_cast<std::uint8_t>(i + 2));
      if (*invite(pad(), stranger) == "no") ++refusedAtOnce;
    }
    EXPECT_EQ(refusedAtOnce, 10);
    fake::settle();
    EXPECT_EQ(asked, 30);
  });
}

TEST_F(MacPeers, LetsThirtyStrangersThroughInAnyMinute) {
  run([&] {
    system().onAlert = [&](const fake::Alert&) { return 1001; };
    int letIn = 0;
    for (int second = 0; second < 59; ++second) {
      const auto answer = invite(pad(), test::SigningDevice(static_cast<std::uint8_t>(second + 2)));
      if (*answer != "no") ++letIn;
      fake::advance(1);
    }
    EXPECT_EQ(letIn, 30);
    fake::advance(2);
    EXPECT_NE(*invite(pad(), test::SigningDevice(100)), "no");
  });
}

// An alert that nobody answers, and another stranger every 30 seconds.
TEST_F(MacPeers, LetsAPairedDeviceInHoweverManyStrangersWait) {
  run([&] {
    const auto paired = invite(pad(), device_);
    fake::settle();
    ASSERT_EQ(*paired, "yes 0");
    int refused = 0;
    bool isUp = false;
    system().onAlert = [&](const fake::Alert&) {
      if (std::exchange(isUp, true)) return 1001;
      for (int i = 0; i < 80; ++i) {
        const test::SigningDevice stranger(static_cast<std::uint8_t>(i + 10));
        if (*invite(pad(), stranger) == "no") ++refused;
        fake::advance(30);
      }
      const auto again = invite(pad(), device_);
      fake::settle();
      EXPECT_EQ(*again, "yes 0");
      return 1001;
    };
    const auto first = invite(pad(), test::SigningDevice(2));
    fake::settle();
    EXPECT_EQ(refused, 80 - 63);
  });
}

TEST_F(MacPeers, RefusesNamesThatChangeWhatIsAsked) {
  run([&] {
    for (const char* name : {"iPad”?\nPress Pair", "\u202E\u200B", "a\x01", ""}) {
      MCPeerID* peer = [[MCPeerID alloc] initWithDisplayName:fake::string(name)];
      forgetLog();
      EXPECT_EQ(*invite(peer, device_), "no") << name;
      change(peer, MCSessionStateConnected);
      receive(peer, test::challengeRequest(1));
      fake::settle();
      EXPECT_TRUE(system().log.empty()) << name;
      EXPECT_NE(shownBy(system().statusItem).find("waiting"), std::string::npos) << name;
    }
  });
}

TEST_F(MacPeers, CutsMarksOfDirectionOutOfNames) {
  run([&] {
    std::vector<std::string> asked;
    system().onAlert = [&](const fake::Alert& alert) {
      asked.push_back(alert.message);
      return 1000;
    };
    MCPeerID* peer = [[MCPeerID alloc] initWithDisplayName:fake::string("\u202EiPad\u202C של דנה")];
    const auto answer = invite(peer, device_);
    fake::settle();
    EXPECT_EQ(*answer, "yes 0");
    EXPECT_EQ(asked, std::vector<std::string>{"Pair with “iPad של דנה”?"});
    change(peer, MCSessionStateConnected);
    EXPECT_NE(shownBy(system().statusItem).find("iPad connected"), std::string::npos);
  });
}

TEST_F(MacPeers, IsStillFreeForOthersAfterAFloodOfBadNames) {
  run([&] {
    MCPeerID* bad = [[MCPeerID alloc] initWithDisplayName:@"a\nb"];
    for (int i = 0; i < 100; ++i) EXPECT_EQ(*invite(bad, device_), "no");
    const auto answer = invite(pad(), device_);
    fake::settle();
    EXPECT_EQ(*answer, "yes 0");
  });
}

}  // namespace
}  // namespace torvane
