// The program's own main() and adapters, unchanged, with the real core, on a Mac made of nothing.
#pragma once

#include "mac/on_a_mac.h"
#include "support/signing_device.h"

int torvane_main();
std::string shownBy(NSStatusItem* item);

namespace torvane {

using fake::said;
using fake::system;

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

}  // namespace torvane
