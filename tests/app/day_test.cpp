// A whole day of the helper's life, from launch to quitting.

#include "fakes/bridge_test.h"

namespace torvane {
namespace {

class Day : public HelperTest {
 protected:
  test::SigningDevice ann{1};
  test::SigningDevice ben{2};
  int strokes = 0;  // drawn since the engine was started
  bool presenting = false;

  // An engine that numbers its ink from 1.
  void runEngine() {
    strokes = 0;
    platform.http.server = [this](const HttpRequest& request) {
      const auto since = request.url.find("since=");
      const bool isInk = since != std::string::npos;
      return FakeAnswer{
          httpResult(200, isInk ? inkSince(std::stoi(request.url.substr(since + 6))) : "{}")};
    };
  }
  std::string inkSince(int since) const {
    std::string events;
    for (int id = since + 1; id <= strokes; ++id) {
      if (!events.empty()) events += ",";
      events += R"({"t":"begin","x":0.5,"y":0.5,"id":)" + std::to_string(id) + "}";
    }
    return R"({"seq":)" + std::to_string(strokes) + R"(,"events":[)" + events +
           R"(],"presenting":)" + (presenting ? "true" : "false") + "}";
  }

  [[nodiscard]] bool ownEngineRuns() const {
    const auto& launched = platform.processes.launched;
    return !launched.empty() && launched.back().process->isRunning();
  }

  std::shared_ptr<std::vector<InvitationAnswer>> knock(const test::SigningDevice& device,
                                                       const PeerID& peer) {
    auto answers = platform.peerLink.invite(peer, device.rawKey());
    platform.time.runDue();
    return answers;
  }
  // What a device gets for one signed request over a fresh challenge.
  std::optional<std::int64_t> statusOf(const test::SigningDevice& device, const PeerID& peer,
                                       std::int64_t id) {
    auto& session = platform.peerLink.current();
    session.receive(peer, test::challengeRequest(id));
    platform.time.runDue();
    const auto challenged = P2PFrame::decode(session.sentTo(peer).back()).value();
    const auto body = parseJsonObject(asText(challenged.body)).value();
    session.receive(peer, device.envelope(stringMember(body, "challenge").value(),
                                          {{"id", id}, {"path", "/api/next"}}));
    platform.time.runDue();
    return integerMember(P2PFrame::decode(session.sentTo(peer).back())->header, "status");
  }
};

TEST_F(Day, PassesFromTheFirstLaunchToQuitting) {
  platform.http.keepsRequests = false;  // there will be a million
  // Morning: the first launch welcomes, then starts an engine that comes up.
  platform.defaults.stored.clear();
  launch();
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
  platform.time.advance(1.6);
  ASSERT_TRUE(ownEngineRuns());
  runEngine();
  platform.time.advance(3);
  EXPECT_FALSE(isIconDimmed());

  // Two iPads invite; the second one while the first one's alert is up.
  const auto annsPeer = platform.peerLink.newPeer("Ann");
  const auto bensPeer = platform.peerLink.newPeer("Ben");
  std::shared_ptr<std::vector<InvitationAnswer>> bens;
  platform.alerts.whileUp = [&](const AlertContent& alert) {
    if (alert.message != "Pair with “Ann”?") return;
    bens = knock(ben, bensPeer);
    platform.time.advance(60);  // the presenter is slow; the timers go on
    EXPECT_TRUE(bens->empty());
  };
  const auto anns = knock(ann, annsPeer);
  EXPECT_TRUE(anns->at(0).accept && bens->at(0).accept);
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 1);
  platform.alerts.whileUp = nullptr;
  connect(annsPeer);
  connect(bensPeer);
  EXPECT_EQ(platform.statusBar.shown.icons.back().toolTip,
            "Torvane P2P Helper: iPad connected (Ann, Ben)");

  // The talk: both are served and draw, for hours.
  presenting = true;
  for (int hour = 0; hour < 8; ++hour) {
    ++strokes;
    EXPECT_EQ(statusOf(ann, annsPeer, hour), 200);
    EXPECT_EQ(statusOf(ben, bensPeer, hour), 200);
    platform.time.advance(3600);
  }

  ASSERT_NE(platform.overlaySurfaces.shown.content, nullptr);
  const OverlayView& overlay = *platform.overlaySurfaces.shown.content;
  EXPECT_EQ(overlay.strokes.size(), 8U);
  EXPECT_TRUE(platform.overlaySurfaces.shown.isVisible);

  // The engine dies; a tap is told so. The presenter starts it again.
  platform.processes.launched.back().process->exit(1);
  platform.http.server = nullptr;
  platform.time.advance(10);
  EXPECT_TRUE(isIconDimmed());
  EXPECT_TRUE(platform.overlaySurfaces.shown.isVisible);
  presenting = false;
  EXPECT_EQ(statusOf(ann, annsPeer, 100), 502);
  choose("Start Server");
  EXPECT_TRUE(ownEngineRuns());
  runEngine();
  platform.time.advance(3);
  EXPECT_EQ(statusOf(ann, annsPeer, 101), 200);
  EXPECT_TRUE(overlay.strokes.empty());
  EXPECT_FALSE(platform.overlaySurfaces.shown.isVisible);

  // Evening: forgotten devices stay until they drop, then have to ask again.
  choose("Forget Paired Devices…");
  EXPECT_TRUE(pairedNames().empty());
  EXPECT_EQ(statusOf(ben, bensPeer, 100), 200);
  disconnect(annsPeer);
  disconnect(bensPeer);
  EXPECT_FALSE(serves(annsPeer) || serves(bensPeer));
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
  platform.alerts.answers = {kAlertFirstButton + 1};
  EXPECT_FALSE(knock(ann, platform.peerLink.newPeer("Ann"))->at(0).accept);

  // Night, and the way out.
  platform.time.advance(15 * 3600.0);
  EXPECT_GE(platform.time.now(), 23 * 3600.0);
  platform.application.onTerminate = [&] { helper->applicationWillTerminate(); };
  platform.statusBar.shown.menu->menuNeedsUpdate().back().action();
  EXPECT_EQ(platform.processes.launched.back().process->terminations, 1);
}

}  // namespace
}  // namespace torvane
