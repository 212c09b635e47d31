// The program's own main() and adapters, unchanged, with the real core, on a Mac made of nothing.

#include "mac/on_a_mac.h"
#include "support/signing_device.h"

int torvane_main();
std::string shownBy(NSStatusItem* item);

namespace torvane {
namespace {

using fake::said;
using fake::system;

using Events = id<MCSessionDelegate, MCNearbyServiceAdvertiserDelegate>;

// Each test is one run of the program, from its start to the end of `body`.
class MacProgram : public OnAMac {
 protected:
  MacProgram() {
    @autoreleasepool {
      system().readableFiles = {
          "/nonexistent/home/Library/Application Support/com.apple.TCC/TCC.db"};
      system().defaults["didShowWelcome"] = [NSNumber numberWithBool:YES];
      system().info["CFBundleVersion"] = @"42";
    }
  }

  void run(const std::function<void()>& body) {
    @autoreleasepool {
      system().body = [&] {
        @autoreleasepool {
          body();
        }
      };
      torvane_main();
      system().performed.clear();  // the process has ended
      system().timers.clear();
    }
  }

  static void forgetLog() { system().log.clear(); }

  static std::size_t placeOf(const std::string& line) {
    const auto& log = system().log;
    return static_cast<std::size_t>(std::find(log.begin(), log.end(), line) - log.begin());
  }

  static MCPeerID* pad() { return [[MCPeerID alloc] initWithDisplayName:@"Zoë's iPad"]; }
  static id<MCSessionDelegate> sessionEvents(std::size_t i) {
    return system().sessions[i].delegate;
  }

  // Invites; the answer, as it comes, is "yes 0" for the first session, "no", or nothing yet.
  static std::shared_ptr<std::string> invite(MCPeerID* peer, const test::SigningDevice& device) {
    auto answer = std::make_shared<std::string>();
    const auto key = device.rawKey();
    id<MCNearbyServiceAdvertiserDelegate> events = system().advertiser.delegate;
    fake::elsewhere([&, answer] {
      [events advertiser:system().advertiser
          didReceiveInvitationFromPeer:peer
                           withContext:[NSData dataWithBytes:key.data() length:key.size()]
                     invitationHandler:^(BOOL accept, MCSession* session) {
                       const auto& all = system().sessions;
                       const auto at = std::find(all.begin(), all.end(), session) - all.begin();
                       *answer = accept ? "yes " + std::to_string(at) : "no";
                     }];
    });
    return answer;
  }

  static void change(MCPeerID* peer, MCSessionState state, std::size_t session = 0) {
    auto& connected = system().connected;
    connected.erase(std::remove(connected.begin(), connected.end(), peer), connected.end());
    if (state == MCSessionStateConnected) connected.push_back(peer);
    fake::elsewhere([&] {
      [sessionEvents(session) session:system().sessions[session] peer:peer didChangeState:state];
    });
    fake::settle();
  }

  static void receive(MCPeerID* peer, const Bytes& data, std::size_t session = 0) {
    fake::elsewhere([&] {
      [sessionEvents(session) session:system().sessions[session]
                       didReceiveData:[NSData dataWithBytes:data.data() length:data.size()]
                             fromPeer:peer];
    });
  }

  static std::string lastLine() { return system().log.empty() ? "" : system().log.back(); }

  test::SigningDevice device_{1};
};

TEST_F(MacProgram, LaunchesInItsOrder) {
  run([&] {
    EXPECT_LT(placeOf("policy 1"), placeOf("status item -1"));
    EXPECT_LT(placeOf("status item -1"), placeOf("session Zoë's Mac no identity encryption 1"));
    EXPECT_LT(placeOf("session Zoë's Mac no identity encryption 1"),
              placeOf("advertiser Zoë's Mac no info torvane"));
    EXPECT_LT(placeOf("advertiser Zoë's Mac no info torvane"), placeOf("start advertising"));
    EXPECT_LT(placeOf("start advertising"), placeOf("trust with a prompt"));
    EXPECT_LT(placeOf("trust with a prompt"), placeOf("GET http://127.0.0.1:8484/api/state"));
    EXPECT_LT(placeOf("GET http://127.0.0.1:8484/api/state"), system().log.size());
  });
}

TEST_F(MacProgram, WelcomesTheUserOnce) {
  system().defaults.clear();
  run([&] {
    EXPECT_LT(placeOf("defaults set didShowWelcome"), placeOf("to the front"));
    EXPECT_LT(placeOf("to the front"), placeOf("alert Welcome to Torvane P2P Helper"));
    EXPECT_LT(placeOf("alert Welcome to Torvane P2P Helper"), placeOf("trust with a prompt"));
  });
}

TEST_F(MacProgram, ShowsATemplateSymbolThatFollowsTheState) {
  run([&] {
    EXPECT_EQ(shownBy(system().statusItem),
              "dot.radiowaves.right, Torvane P2P Helper, template, dimmed, "
              "Torvane P2P Helper: waiting for the iPad app");
    change(pad(), MCSessionStateConnected);
    EXPECT_EQ(shownBy(system().statusItem),
              "dot.radiowaves.left.and.right, Torvane P2P Helper, template, dimmed, "
              "Torvane P2P Helper: iPad connected (Zoë's iPad)");
  });
}

TEST_F(MacProgram, FillsTheMenuEachTimeAndQuitsFromIt) {
  run([&] {
    NSMenu* menu = system().statusItem.menu;
    for (int i = 0; i < 2; ++i) [menu.delegate menuNeedsUpdate:menu];
    ASSERT_FALSE(system().items.empty());
    NSMenuItem* quit = system().items.back();
    EXPECT_EQ(fake::title(quit), "Quit");
    EXPECT_TRUE(quit.enabled);
    fake::choose(quit);
    EXPECT_FALSE(said("terminate"));  // not while the menu's own code is still at work
    fake::settle();
    EXPECT_LT(placeOf("terminate"), placeOf("stop advertising"));
    EXPECT_LT(placeOf("stop advertising"), placeOf("disconnect"));
    EXPECT_LT(placeOf("disconnect"), placeOf("ended"));
    EXPECT_LT(placeOf("ended"), system().log.size());
  });
}

TEST_F(MacProgram, AcceptsAnInvitationIntoTheCurrentSessionWhenTheUserPairs) {
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

TEST_F(MacProgram, RefusesWhenTheUserDoesNotPair) {
  for (const int closed : {1001, -1000, -1001}) {
    run([&] {
      system().onAlert = [&](const fake::Alert&) { return closed; };
      const auto answer = invite(pad(), device_);
      fake::settle();
      EXPECT_EQ(*answer, "no");
    });
  }
}

TEST_F(MacProgram, GoesOnWithQueuedWorkWhileAnAlertIsUp) {
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

TEST_F(MacProgram, RunsWhatWasQueuedBeforeTheAlertInsideItsLoop) {
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

TEST_F(MacProgram, AnswersARequestToItsPeerAloneAndReliably) {
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

TEST_F(MacProgram, IgnoresEventsOfAReplacedSession) {
  run([&] {
    MCPeerID* peer = pad();
    const auto first = system().sessions[0];
    id<MCSessionDelegate> events = first.delegate;
    change(peer, MCSessionStateConnected);
    change(peer, MCSessionStateNotConnected);
    ASSERT_EQ(system().sessions.size(), 2U);
    EXPECT_EQ(first.delegate, nil);
    forgetLog();
    [events session:first peer:peer didChangeState:MCSessionStateConnected];
    const char bytes[] = {0, 0, 0, 0};
    [events session:first didReceiveData:[NSData dataWithBytes:bytes length:4] fromPeer:peer];
    fake::settle();
    EXPECT_TRUE(system().log.empty());
  });
}

TEST_F(MacProgram, ShowsTheOverlayWithItsSettings) {
  run([&] {
    system().listedWindows = {{"Finder", {{0, 0}, {1920, 1080}}},
                              {"Microsoft PowerPoint", {{0, 0}, {1920, 1080}}}};
    fake::respond(system().requests.back(), 200, "application/json", "{}");
    fake::settle();
    fake::advance(0.1);
    ASSERT_EQ(system().requests.back().url, "http://127.0.0.1:8484/api/ink/events?since=0");
    fake::respond(system().requests.back(), 200, "application/json",
                  "{\"seq\":3,\"presenting\":true,\"aspect\":0.5625,\"overlayV\":-1,\"events\":["
                  "{\"t\":\"begin\",\"id\":1,\"x\":0.1,\"y\":0.1},"
                  "{\"t\":\"pt\",\"id\":1,\"x\":0.2,\"y\":0.2},"
                  "{\"t\":\"laser\",\"x\":0.5,\"y\":0.5}]}");
    fake::settle();
    EXPECT_TRUE(said("window style 0 backing 2 defer 0"));
    ASSERT_EQ(system().windows.size(), 1U);
    NSWindow* window = system().windows[0];
    EXPECT_EQ(window.level, 1000);
    EXPECT_EQ(window.collectionBehavior, 337U);
    EXPECT_FALSE(window.opaque);
    EXPECT_FALSE(window.hasShadow);
    EXPECT_TRUE(window.ignoresMouseEvents);
    EXPECT_EQ(window.backgroundColor, [NSColor clearColor]);
    EXPECT_TRUE(((NSView*)window.contentView).flipped);
    EXPECT_TRUE(said("front"));
    EXPECT_TRUE(said("to the screen"));
  });
}

TEST_F(MacProgram, DoesNotLetARequestLeaveTheEngine) {
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

TEST_F(MacProgram, StopsExceptionsAtTheEdge) {
  run([&] {
    NSMenu* menu = system().statusItem.menu;
    [menu.delegate menuNeedsUpdate:menu];
    NSMenuItem* item = system().items.back();
    item.tag = 1000;  // there is no such item: at() throws
    fake::choose(item);
    EXPECT_TRUE(said("NSLog Torvane P2P Helper: %s"));
  });
}

TEST_F(MacProgram, TogglesLaunchAtLoginAndTellsWhyItCannot) {
  run([&] {
    const auto toggle = [] {
      NSMenu* menu = system().statusItem.menu;
      [menu.delegate menuNeedsUpdate:menu];
      for (NSMenuItem* item : system().items) {
        if (fake::title(item) != "Launch at Login") continue;
        const bool isOn = item.state == NSControlStateValueOn;
        fake::choose(item);
        return isOn;
      }
      ADD_FAILURE() << "no such item";
      return false;
    };
    EXPECT_FALSE(toggle());
    EXPECT_EQ(lastLine(), "register");
    system().loginStatus = SMAppServiceStatusEnabled;
    EXPECT_TRUE(toggle());
    EXPECT_EQ(lastLine(), "unregister");

    system().loginStatus = SMAppServiceStatusRequiresApproval;
    system().loginFails = true;
    std::string told;
    system().onAlert = [&](const fake::Alert& alert) {
      told = alert.informativeText;
      return 1000;
    };
    EXPECT_FALSE(toggle());
    EXPECT_EQ(told, "Couldn't change Launch at Login: Not today.");
  });
}

TEST_F(MacProgram, EndsAnotherCopyThatRuns) {
  system().info["CFBundleIdentifier"] = @"app.torvane.p2p-helper";
  const int gone = 0x7ffffffe;  // no process has this number
  system().runningApplications = {{gone, "/Users/me/Downloads/Torvane P2P Helper.app"},
                                  {4711, "/Applications/Torvane P2P Helper.app"}};
  run([&] {
    EXPECT_TRUE(said("force " + std::to_string(gone)));
    EXPECT_FALSE(said("force 4711"));
  });
}

TEST_F(MacProgram, TellsWhyItIsNotAdvertised) {
  run([&] {
    id<MCNearbyServiceAdvertiserDelegate> events = system().advertiser.delegate;
    fake::elsewhere([&] {
      [events advertiser:system().advertiser didNotStartAdvertisingPeer:fake::error("No radio.")];
    });
    fake::settle();
    EXPECT_TRUE(shownBy(system().statusItem).find("waiting") != std::string::npos);
  });
}

TEST_F(MacProgram, LetsNoFloodOfInvitationsThrough) {
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

}  // namespace
}  // namespace torvane
