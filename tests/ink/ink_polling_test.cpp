#include "fakes/helper_test.h"
#include "fakes/recording_canvas.h"

namespace torvane {
namespace {

constexpr const char* kSinceZero = "/api/ink/events?since=0";

class InkPolling : public HelperTest {
 protected:
  OverlayView* view = nullptr;
  ShownOverlay& shown = platform.overlaySurfaces.shown;
  FakeAnswer events{httpError("refused")};
  FakeAnswer picture{httpResult(404)};

  void SetUp() override {
    view = &construct().overlayView;
    helper->serverRunning = true;
    platform.http.server = [this](const HttpRequest& request) {
      return request.url.find("/api/ink/overlay") != std::string::npos ? picture : events;
    };
  }

  // One tick, answered with this body.
  void tick(std::string_view body, int status = 200) {
    events = {httpResult(status, body)};
    helper->inkTick();
    platform.time.runDue();
  }
  bool redrawsAfter(std::string_view body) {
    const int before = shown.invalidations;
    tick(body);
    return shown.invalidations != before;
  }
  std::size_t asked() const { return platform.http.requests.size() - fetched(); }
  std::size_t fetched() const { return platform.http.requestsTo("/api/ink/overlay").size(); }
  std::string pictureText() const {
    const auto* shownPicture = dynamic_cast<const FakePicture*>(view->overlayImage.get());
    return shownPicture != nullptr ? shownPicture->file : "";
  }
};

TEST_F(InkPolling, StartsWithNothingKnown) {
  EXPECT_EQ(helper->inkSeq, 0);
  EXPECT_FALSE(helper->inkBusy);
  EXPECT_EQ(helper->lastOverlayV, -1);
  EXPECT_EQ(helper->overlay, nullptr);
}

TEST_F(InkPolling, AsksForTheEventsSinceTheLastAnswer) {
  tick(R"({"seq":41})");
  tick(R"({"seq":42})");
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 1U);
  const auto second = platform.http.requestsTo("/api/ink/events?since=41");
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(second[0].method, "GET");
  EXPECT_TRUE(second[0].body.empty() && !second[0].contentType);
  EXPECT_EQ(second[0].idleTimeout, 2.0);
  EXPECT_EQ(second[0].onlyEndpoint, (HttpEndpoint{"127.0.0.1", 8484}));
}

TEST_F(InkPolling, OwnRequestsAreBoundedInTimeAndSize) {
  tick(R"({"seq":1})");
  ASSERT_EQ(platform.http.requests.size(), 2U);
  for (const auto& request : platform.http.requests) {
    EXPECT_EQ(request.totalTimeout, 10) << request.url;
    EXPECT_EQ(request.maxResponseBytes, 32U << 20U) << request.url;
  }
}

TEST_F(InkPolling, TickSendsNothingWhileTheEngineIsNotRunning) {
  helper->serverRunning = false;
  tick(R"({"seq":1})");
  EXPECT_TRUE(platform.http.requests.empty());
  EXPECT_FALSE(helper->inkBusy);
}

TEST_F(InkPolling, TickSendsNothingWhileARequestIsOutstanding) {
  events = {httpResult(200, R"({"seq":1})"), 1.0};
  helper->inkTick();
  EXPECT_TRUE(helper->inkBusy);
  platform.time.advance(0.9);
  helper->inkTick();
  EXPECT_EQ(asked(), 1U);
  platform.time.advance(0.2);
  helper->inkTick();
  EXPECT_EQ(asked(), 2U);
}

TEST_F(InkPolling, RunsTwelveAndAHalfTimesASecondOnceTheEngineIsUp) {
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200, "{}")}; };
  launch();
  platform.time.advance(10.04);
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 125U);
}

TEST_F(InkPolling, UnreachableEngineCostsTwoSecondsAnAttempt) {
  events = {httpResult(200, R"({"seq":1})"), 60};
  helper->inkTick();
  platform.time.advance(1.9);
  EXPECT_TRUE(helper->inkBusy);
  platform.time.advance(0.2);
  EXPECT_FALSE(helper->inkBusy);
  EXPECT_EQ(helper->inkSeq, 0);
}

TEST_F(InkPolling, AnswerIsAppliedBeforeTheNextRequestCanLeave) {
  events = {httpResult(200, R"({"seq":7})")};
  helper->inkTick();
  while (helper->inkBusy) {
    EXPECT_EQ(helper->inkSeq, 0);
    platform.time.runNext();
  }
  EXPECT_EQ(helper->inkSeq, 7);
}

TEST_F(InkPolling, HugeAnswerLeavesTurnsToOtherWorkAndLetsNoRequestIn) {
  constexpr std::size_t kStrokes = 120'000;
  std::string body = R"({"seq":9,"presenting":true,"overlayV":1,"events":[{})";
  for (std::size_t id = 0; id < kStrokes; ++id) {
    body += R"(,{"t":"begin","x":0,"y":0,"id":)" + std::to_string(id) + "}";
  }
  events = {httpResult(200, body + "]}")};
  std::vector<std::size_t> strokesAtOtherWork;
  std::function<void()> otherWork = [&] {
    if (!helper->inkBusy) return;
    strokesAtOtherWork.push_back(view->strokes.size());
    EXPECT_EQ(fetched(), 0U);
    EXPECT_FALSE(shown.isVisible);
    helper->inkTick();
    platform.time.scheduleMain(0, otherWork);
  };
  helper->inkTick();
  otherWork();
  platform.time.runDue();
  EXPECT_EQ(strokesAtOtherWork, (std::vector<std::size_t>{0, 0, 50'000, 100'000}));
  EXPECT_EQ(view->strokes.size(), kStrokes);
  EXPECT_EQ(asked(), 1U);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, SequenceNumberAloneFetchesThePictureOnceAndHidesTheWindow) {
  helper->updateOverlayWindow(true);
  view->setAspect(0.75);
  tick(R"({"seq":5})");
  EXPECT_EQ(helper->inkSeq, 5);
  EXPECT_EQ(view->aspect, 0.5625);
  EXPECT_TRUE(view->strokes.empty() && view->order.empty() && !view->laser);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_EQ(helper->lastOverlayV, 0);
  EXPECT_FALSE(shown.isVisible);
  tick(R"({"seq":5})");
  EXPECT_EQ(fetched(), 1U);
}

TEST_F(InkPolling, AnswerThatChangesNothingLeavesTheMainThreadAsleep) {
  const std::string still = R"({"seq":5,"presenting":true})";
  tick(still);
  platform.mainQueue.sleeps = true;
  tick(still);
  EXPECT_TRUE(helper->inkBusy);
  platform.mainQueue.async([] {});
  platform.time.runDue();
  EXPECT_FALSE(helper->inkBusy);
}

TEST_F(InkPolling, AnswerThatChangesAnythingWakesTheMainThread) {
  tick(R"({"seq":5})");
  platform.mainQueue.sleeps = true;
  for (const auto* body :
       {R"({"seq":6})", R"({"seq":6,"presenting":true})",
        R"({"seq":6,"presenting":true,"aspect":0.75})",
        R"({"seq":6,"presenting":true,"aspect":0.75,"overlayV":2})",
        R"({"seq":6,"presenting":true,"aspect":0.75,"overlayV":2,
                               "events":[{"t":"clear"}]})",
        R"({"seq":2,"presenting":true,"aspect":0.75,"overlayV":2})", "no JSON"}) {
    tick(body);
    EXPECT_FALSE(helper->inkBusy) << body;
  }
}

TEST_F(InkPolling, EveryAnswerWakesTheMainThreadWhileALaserDotIsToBeSeen) {
  const std::string still = R"({"seq":5})";
  tick(R"({"seq":5,"events":[{"t":"laser","x":0.5,"y":0.5}]})");
  platform.mainQueue.sleeps = true;
  platform.time.advance(0.89);
  tick(still);
  EXPECT_FALSE(helper->inkBusy);
  platform.time.advance(0.02);
  tick(still);
  EXPECT_TRUE(helper->inkBusy);
}

TEST_F(InkPolling, KeepsItsPaceWhileTheMainThreadSleeps) {
  platform.mainQueue.sleeps = true;
  platform.http.server = [](const HttpRequest&) {
    return FakeAnswer{httpResult(200, R"({"seq":0,"overlayV":-1})")};
  };
  launch();
  platform.time.advance(10.04);
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 125U);
}

TEST_F(InkPolling, EventsReachTheViewAndTheWindowShowsIt) {
  tick(R"({"seq":3,"events":[{"t":"begin","id":1,"x":0.1,"y":0.2},{"t":"laser","x":0.3,"y":0.4}],
           "presenting":true,"aspect":0.75})");
  EXPECT_EQ(view->order, (std::vector<std::int64_t>{1}));
  EXPECT_EQ(view->laser, (Point{0.3, 0.4}));
  EXPECT_EQ(view->laserAt, platform.time.now());
  EXPECT_EQ(view->aspect, 0.75);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, EqualSequenceNumberIsAccepted) {
  tick(R"({"seq":3})");
  tick(R"({"seq":3,"events":[{"t":"begin","id":1,"x":0,"y":0}],"aspect":1})");
  EXPECT_EQ(view->order.size(), 1U);
  EXPECT_EQ(view->aspect, 1);
}

TEST_F(InkPolling, SequenceNumberGoingBackwardsClearsAndSkipsTheAnswer) {
  picture = {httpResult(200, "picture")};
  tick(R"({"seq":10,"events":[{"t":"begin","id":1,"x":0,"y":0},{"t":"laser","x":0,"y":0}],
           "presenting":true,"aspect":0.75,"overlayV":4})");
  ASSERT_NE(view->overlayImage, nullptr);
  const double laserAt = view->laserAt = 0.5;
  tick(R"({"seq":3,"events":[{"t":"begin","id":2,"x":0,"y":0}],"aspect":1,"overlayV":5})");
  EXPECT_EQ(helper->inkSeq, 0);
  EXPECT_TRUE(view->strokes.empty() && view->order.empty());
  EXPECT_FALSE(view->laser);
  EXPECT_EQ(view->overlayImage, nullptr);
  // And all the rest is left as it was.
  EXPECT_EQ(view->laserAt, laserAt);
  EXPECT_EQ(view->aspect, 0.75);
  EXPECT_EQ(helper->lastOverlayV, 4);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, AfterGoingBackwardsItAsksFromTheStart) {
  tick(R"({"seq":10})");
  tick(R"({"seq":3})");
  tick(R"({"seq":3,"events":[{"t":"begin","id":2,"x":0,"y":0}]})");
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 2U);
  EXPECT_EQ(helper->inkSeq, 3);
  EXPECT_EQ(view->order, (std::vector<std::int64_t>{2}));
}

TEST_F(InkPolling, NegativeSequenceNumberIsAlwaysBackwards) {
  tick(R"({"seq":-1,"events":[{"t":"begin","id":2,"x":0,"y":0}]})");
  EXPECT_EQ(helper->inkSeq, 0);
  EXPECT_TRUE(view->strokes.empty());
  EXPECT_EQ(fetched(), 0U);
}

TEST_F(InkPolling, UnreadableAnswersLeaveEverythingAsItIs) {
  tick(R"({"seq":9,"presenting":true,"aspect":0.75})");
  for (const auto* body :
       {"", "[]", "{}", "{", R"({"seq":10.5})", "<html>",
        R"({"seq":"5","overlayV":3,"events":[{"t":"begin","id":1,"x":0,"y":0}]})"}) {
    tick(body);
    EXPECT_EQ(helper->inkSeq, 9) << body;
    EXPECT_EQ(view->aspect, 0.75) << body;
    EXPECT_TRUE(shown.isVisible) << body;
    EXPECT_FALSE(helper->inkBusy) << body;
  }
  EXPECT_EQ(helper->frameTick, 1);
  EXPECT_TRUE(view->strokes.empty());
  EXPECT_EQ(fetched(), 1U);  // for the one that was read
}

TEST_F(InkPolling, TransportErrorIsSilent) {
  helper->inkTick();
  platform.time.runDue();
  EXPECT_FALSE(helper->inkBusy);
  EXPECT_EQ(helper->inkSeq, 0);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(InkPolling, OnlyTheBodyOfAnAnswerCountsNotItsStatus) {
  tick(R"({"seq":8})", 500);
  EXPECT_EQ(helper->inkSeq, 8);
}

TEST_F(InkPolling, RedrawIsAskedForAfterEventsAndWhileTheLaserIsAlive) {
  const std::string still = R"({"seq":2,"presenting":true})";
  tick(still);
  EXPECT_FALSE(redrawsAfter(still));
  EXPECT_TRUE(
      redrawsAfter(R"({"seq":2,"events":[{"t":"laser","x":0.5,"y":0.5}],"presenting":true})"));
  platform.time.advance(0.8);
  EXPECT_TRUE(redrawsAfter(still));
  platform.time.advance(0.2);
  EXPECT_FALSE(redrawsAfter(still));
}

TEST_F(InkPolling, LastTraceOfAFadedLaserDotIsWipedOnce) {
  const std::string still = R"({"seq":2,"presenting":true})";
  const Rect screen{0, 0, 1920, 1080};
  RecordingCanvas canvas;
  tick(R"({"seq":2,"events":[{"t":"laser","x":0.5,"y":0.5}],"presenting":true})");
  view->setSize(screen.width, screen.height);
  platform.time.advance(0.89);
  view->draw(canvas, screen, platform.time.now());
  platform.time.advance(0.02);
  EXPECT_TRUE(redrawsAfter(still));
  view->draw(canvas, screen, platform.time.now());
  EXPECT_FALSE(redrawsAfter(still));
}

TEST_F(InkPolling, WindowKeepsItsStateWhenTheEngineStops) {
  tick(R"({"seq":1,"presenting":true})");
  helper->serverRunning = false;
  helper->inkTick();
  platform.time.advance(60);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, PictureIsFetchedFromTheEngine) {
  picture = {httpResult(200, "picture one")};
  tick(R"({"seq":1,"presenting":true,"overlayV":1})");
  const auto requests = platform.http.requestsTo("/api/ink/overlay");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].idleTimeout, 3.0);
  EXPECT_EQ(requests[0].onlyEndpoint, (HttpEndpoint{"127.0.0.1", 8484}));
  EXPECT_EQ(pictureText(), "picture one");
}

TEST_F(InkPolling, PictureThatArrivesAsksForARedraw) {
  tick(R"({"seq":1,"presenting":true})");
  picture = {httpResult(200, "picture")};
  EXPECT_TRUE(redrawsAfter(R"({"seq":1,"presenting":true,"overlayV":1})"));
}

TEST_F(InkPolling, PictureIsFetchedOncePerVersionWhicheverWayItChanges) {
  picture = {httpResult(200, "picture")};
  for (const auto* version : {"5", "5", "3", "3", "-1", "5"}) {
    tick(R"({"seq":1,"overlayV":)" + std::string(version) + "}");
  }
  EXPECT_EQ(fetched(), 4U);
  EXPECT_EQ(helper->lastOverlayV, 5);
}

TEST_F(InkPolling, FirstPictureOfVersionMinusOneIsTakenForKnown) {
  tick(R"({"seq":1,"overlayV":-1})");
  EXPECT_EQ(fetched(), 0U);
}

TEST_F(InkPolling, PictureNotFoundRemovesTheShownOneAndIsNotFetchedAgain) {
  picture = {httpResult(200, "picture")};
  tick(R"({"seq":1,"overlayV":1})");
  ASSERT_EQ(pictureText(), "picture");
  picture = {httpResult(404, "picture of an error")};
  tick(R"({"seq":1,"overlayV":2})");
  EXPECT_EQ(view->overlayImage, nullptr);
  picture = {httpResult(200, "picture")};
  tick(R"({"seq":1,"overlayV":2})");
  EXPECT_EQ(fetched(), 2U);
  EXPECT_EQ(view->overlayImage, nullptr);
}

TEST_F(InkPolling, FailedFetchRemovesTheShownPicture) {
  for (const auto& failure :
       {FakeAnswer{httpError("refused")}, FakeAnswer{httpResult(200, "")},
        FakeAnswer{httpResult(200, "no image")}, FakeAnswer{httpResult(204, "picture")}}) {
    helper->lastOverlayV = 0;
    view->setOverlayImage(std::make_shared<FakePicture>("before"));
    picture = failure;
    tick(R"({"seq":1,"overlayV":1})");
    EXPECT_EQ(view->overlayImage, nullptr);
    EXPECT_EQ(helper->lastOverlayV, 1);
  }
  EXPECT_EQ(platform.pictures.decoded, 0);
}

TEST_F(InkPolling, PictureSlowerThanThreeSecondsIsNone) {
  picture = {httpResult(200, "picture"), 3.5};
  tick(R"({"seq":1,"overlayV":1})");
  view->setOverlayImage(std::make_shared<FakePicture>("before"));
  platform.time.advance(4);
  EXPECT_EQ(view->overlayImage, nullptr);
}

TEST_F(InkPolling, FetchOfAPictureHoldsUpNoEvents) {
  picture = {httpResult(200, "picture"), 2.5};
  tick(R"({"seq":1,"overlayV":1})");
  tick(R"({"seq":2,"overlayV":1})");
  EXPECT_EQ(helper->inkSeq, 2);
  EXPECT_EQ(view->overlayImage, nullptr);
  platform.time.advance(2.6);
  EXPECT_NE(view->overlayImage, nullptr);
}

TEST_F(InkPolling, OfOverlappingFetchesTheLastToCompleteWins) {
  picture = {httpResult(200, "picture one"), 2.0};
  tick(R"({"seq":1,"overlayV":1})");
  picture = {httpResult(200, "picture two"), 1.0};
  tick(R"({"seq":1,"overlayV":2})");
  platform.time.advance(1.5);
  EXPECT_EQ(pictureText(), "picture two");
  platform.time.advance(1);
  EXPECT_EQ(pictureText(), "picture one");
  EXPECT_EQ(helper->lastOverlayV, 2);
}

TEST_F(InkPolling, SlowDecodingDoesNotLetAnEarlierPictureWin) {
  platform.pictures.secondsPerPicture = 1;
  picture = {httpResult(200, "picture one")};
  tick(R"({"seq":1,"overlayV":1})");
  picture = {httpResult(404)};
  tick(R"({"seq":1,"overlayV":2})");
  platform.time.advance(2);
  EXPECT_EQ(view->overlayImage, nullptr);
}

TEST_F(InkPolling, PictureOnItsWayStillArrivesAfterClearing) {
  picture = {httpResult(200, "picture"), 1.0};
  tick(R"({"seq":9,"overlayV":1})");
  tick(R"({"seq":3})");
  platform.time.advance(2);
  EXPECT_EQ(pictureText(), "picture");
}

TEST_F(InkPolling, AnswersThatComeAfterTheHelperHasGoneAreDropped) {
  platform.pictures.secondsPerPicture = 1;
  picture = {httpResult(200, "picture"), 1.0};
  events = {httpResult(200, R"({"seq":1})"), 1.0};
  helper->fetchOverlayImage(1);
  helper->inkTick();
  helper.reset();
  platform.time.advance(5);
  EXPECT_EQ(platform.pictures.decoded, 0);
}

TEST_F(InkPolling, PictureThatIsDecodedAfterTheHelperHasGoneIsDropped) {
  platform.pictures.secondsPerPicture = 1;
  picture = {httpResult(200, "picture")};
  helper->fetchOverlayImage(1);
  platform.time.advance(0.5);
  EXPECT_EQ(platform.pictures.decoded, 1);
  helper.reset();
  platform.time.advance(5);
}

}  // namespace
}  // namespace torvane
