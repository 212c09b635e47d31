#include "fakes/helper_test.h"
#include "fakes/ink_test.h"
#include "fakes/recording_canvas.h"

namespace torvane {
namespace {

constexpr const char* kSinceZero = "/api/ink/events?since=0";

class InkPolling : public InkTest {
 protected:
  bool redrawsAfter(std::string_view body) {
    const int before = shown.invalidations;
    tick(body);
    return shown.invalidations != before;
  }
  std::string pictureText() const {
    const auto* shownPicture = dynamic_cast<const FakePicture*>(view.overlayImage.get());
    return shownPicture != nullptr ? shownPicture->file : "";
  }
};

class InkOfTheProgram : public HelperTest {
 protected:
  // An engine that runs, and whose ink and picture come so many seconds after a question.
  void answersWithAPictureAfter(double seconds) {
    platform.http.server = [seconds](const HttpRequest& request) {
      if (request.url.find("/api/ink/overlay") != std::string::npos) {
        return FakeAnswer{httpResult(200, "picture"), seconds};
      }
      return FakeAnswer{httpResult(200, R"({"seq":1,"overlayV":1})"), 0};
    };
    launch();
  }
};

TEST_F(InkPolling, StartsWithNothingKnown) {
  EXPECT_EQ(shown.timesMade, 0);
  EXPECT_EQ(since(), 0);
  EXPECT_EQ(fetched(), 0U);
  EXPECT_EQ(shown.timesMade, 0);
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
  serverRunning = false;
  tick(R"({"seq":1})");
  EXPECT_TRUE(platform.http.requests.empty());
  serverRunning = true;
  EXPECT_EQ(since(), 0);
}

TEST_F(InkPolling, TickSendsNothingWhileARequestIsOutstanding) {
  events = {httpResult(200, R"({"seq":1})"), 1.0};
  ink.inkTick();
  platform.time.advance(0.9);
  ink.inkTick();
  EXPECT_EQ(asked(), 1U);
  platform.time.advance(0.2);
  ink.inkTick();
  EXPECT_EQ(asked(), 2U);
}

TEST_F(InkOfTheProgram, RunsTwelveAndAHalfTimesASecondOnceTheEngineIsUp) {
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200, "{}")}; };
  launch();
  platform.time.advance(10.04);
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 125U);
}

TEST_F(InkPolling, UnreachableEngineCostsTwoSecondsAnAttempt) {
  events = {httpResult(200, R"({"seq":1})"), 60};
  ink.inkTick();
  platform.time.advance(1.9);
  EXPECT_FALSE(asks());
  platform.time.advance(0.2);
  EXPECT_EQ(since(), 0);
}

TEST_F(InkPolling, AnswerIsAppliedBeforeTheNextRequestCanLeave) {
  events = {httpResult(200, R"({"seq":7})")};
  ink.inkTick();
  for (int i = 0; i < 100 && asked() == 1; ++i) {
    platform.time.runNext();
    ink.inkTick();
  }
  EXPECT_EQ(platform.http.requestsTo("/api/ink/events?since=7").size(), 1U);
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
    if (shown.isVisible) return;
    strokesAtOtherWork.push_back(view.strokes.size());
    EXPECT_EQ(fetched(), 0U);
    ink.inkTick();
    EXPECT_EQ(asked(), 1U);
    platform.time.scheduleMain(0, otherWork);
  };
  ink.inkTick();
  otherWork();
  platform.time.runDue();
  EXPECT_EQ(strokesAtOtherWork, (std::vector<std::size_t>{0, 0, 50'000, 100'000}));
  EXPECT_EQ(view.strokes.size(), kStrokes);
  EXPECT_EQ(asked(), 1U);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, SequenceNumberAloneFetchesThePictureOnceAndHidesTheWindow) {
  overlay.updateOverlayWindow(true);
  view.setAspect(0.75);
  tick(R"({"seq":5})");
  EXPECT_EQ(since(), 5);
  EXPECT_EQ(view.aspect, 0.5625);
  EXPECT_TRUE(view.strokes.empty() && view.order.empty() && !view.laser);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_FALSE(shown.isVisible);
  tick(R"({"seq":5})");
  EXPECT_EQ(fetched(), 1U);
  tick(R"({"seq":5,"overlayV":0})");
  EXPECT_EQ(fetched(), 1U);
}

TEST_F(InkPolling, AnswerThatChangesNothingLeavesTheMainThreadAsleep) {
  const std::string still = R"({"seq":5,"presenting":true})";
  tick(still);
  platform.mainQueue.sleeps = true;
  tick(still);
  EXPECT_FALSE(asks());
  platform.mainQueue.async([] {});
  platform.time.runDue();
  EXPECT_TRUE(asks());
}

TEST_F(InkPolling, AnswerThatChangesAnythingWakesTheMainThread) {
  tick(R"({"seq":5})");
  platform.mainQueue.sleeps = true;
  std::size_t asking = asked();
  for (const auto* body :
       {R"({"seq":6})", R"({"seq":6,"presenting":true})",
        R"({"seq":6,"presenting":true,"aspect":0.75})",
        R"({"seq":6,"presenting":true,"aspect":0.75,"overlayV":2})",
        R"({"seq":6,"presenting":true,"aspect":0.75,"overlayV":2,
                               "events":[{"t":"clear"}]})",
        R"({"seq":2,"presenting":true,"aspect":0.75,"overlayV":2})", "no JSON"}) {
    tick(body);
    EXPECT_EQ(asked(), ++asking) << "before " << body;
  }
  EXPECT_TRUE(asks());
}

TEST_F(InkPolling, EveryAnswerWakesTheMainThreadWhileALaserDotIsToBeSeen) {
  const std::string still = R"({"seq":5})";
  tick(R"({"seq":5,"events":[{"t":"laser","x":0.5,"y":0.5}]})");
  platform.mainQueue.sleeps = true;
  platform.time.advance(0.89);
  tick(still);
  EXPECT_TRUE(asks());
  platform.time.advance(0.02);
  tick(still);
  EXPECT_FALSE(asks());
}

TEST_F(InkOfTheProgram, KeepsItsPaceWhileTheMainThreadSleeps) {
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
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1}));
  EXPECT_EQ(view.laser, (Point{0.3, 0.4}));
  EXPECT_EQ(view.laserAt, platform.time.now());
  EXPECT_EQ(view.aspect, 0.75);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(InkPolling, EqualSequenceNumberIsAccepted) {
  tick(R"({"seq":3})");
  tick(R"({"seq":3,"events":[{"t":"begin","id":1,"x":0,"y":0}],"aspect":1})");
  EXPECT_EQ(view.order.size(), 1U);
  EXPECT_EQ(view.aspect, 1);
}

TEST_F(InkPolling, SequenceNumberGoingBackwardsClearsAndSkipsTheAnswer) {
  picture = {httpResult(200, "picture")};
  tick(R"({"seq":10,"events":[{"t":"begin","id":1,"x":0,"y":0},{"t":"laser","x":0,"y":0}],
           "presenting":true,"aspect":0.75,"overlayV":4})");
  ASSERT_NE(view.overlayImage, nullptr);
  const double laserAt = view.laserAt = 0.5;
  tick(R"({"seq":3,"events":[{"t":"begin","id":2,"x":0,"y":0}],"aspect":1,"overlayV":5})");
  EXPECT_EQ(since(), 0);
  EXPECT_TRUE(view.strokes.empty() && view.order.empty());
  EXPECT_FALSE(view.laser);
  EXPECT_EQ(view.overlayImage, nullptr);
  // And all the rest is left as it was.
  EXPECT_EQ(view.laserAt, laserAt);
  EXPECT_EQ(view.aspect, 0.75);
  EXPECT_EQ(fetched(), 1U);
  EXPECT_TRUE(shown.isVisible);
  tick(R"({"seq":3,"overlayV":4})");
  EXPECT_EQ(fetched(), 1U) << "the picture's version is known";
}

TEST_F(InkPolling, AfterGoingBackwardsItAsksFromTheStart) {
  tick(R"({"seq":10})");
  tick(R"({"seq":3})");
  tick(R"({"seq":3,"events":[{"t":"begin","id":2,"x":0,"y":0}]})");
  EXPECT_EQ(platform.http.requestsTo(kSinceZero).size(), 2U);
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{2}));
  EXPECT_EQ(since(), 3);
}

TEST_F(InkPolling, NegativeSequenceNumberIsAlwaysBackwards) {
  tick(R"({"seq":-1,"events":[{"t":"begin","id":2,"x":0,"y":0}]})");
  EXPECT_EQ(since(), 0);
  EXPECT_TRUE(view.strokes.empty());
  EXPECT_EQ(fetched(), 0U);
}

TEST_F(InkPolling, UnreadableAnswersLeaveEverythingAsItIs) {
  tick(R"({"seq":9,"presenting":true,"aspect":0.75})");
  for (const auto* body :
       {"", "[]", "{}", "{", R"({"seq":10.5})", "<html>",
        R"({"seq":"5","overlayV":3,"events":[{"t":"begin","id":1,"x":0,"y":0}]})"}) {
    tick(body);
    EXPECT_EQ(since(), 9) << body;
    EXPECT_EQ(view.aspect, 0.75) << body;
    EXPECT_TRUE(shown.isVisible) << body;
  }
  EXPECT_TRUE(view.strokes.empty());
  EXPECT_EQ(fetched(), 1U);  // for the one that was read
}

TEST_F(InkPolling, TransportErrorIsSilent) {
  ink.inkTick();
  platform.time.runDue();
  EXPECT_EQ(since(), 0);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(InkPolling, OnlyTheBodyOfAnAnswerCountsNotItsStatus) {
  tick(R"({"seq":8})", 500);
  EXPECT_EQ(since(), 8);
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
  view.setSize(screen.width, screen.height);
  platform.time.advance(0.89);
  view.draw(canvas, screen, platform.time.now());
  platform.time.advance(0.02);
  EXPECT_TRUE(redrawsAfter(still));
  view.draw(canvas, screen, platform.time.now());
  EXPECT_FALSE(redrawsAfter(still));
}

TEST_F(InkPolling, WindowKeepsItsStateWhenTheEngineStops) {
  tick(R"({"seq":1,"presenting":true})");
  serverRunning = false;
  ink.inkTick();
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
  EXPECT_EQ(view.overlayImage, nullptr);
  picture = {httpResult(200, "picture")};
  tick(R"({"seq":1,"overlayV":2})");
  EXPECT_EQ(fetched(), 2U);
  EXPECT_EQ(view.overlayImage, nullptr);
}

TEST_F(InkPolling, FailedFetchRemovesTheShownPicture) {
  int version = 0;
  for (const auto& failure :
       {FakeAnswer{httpError("refused")}, FakeAnswer{httpResult(200, "")},
        FakeAnswer{httpResult(200, "no image")}, FakeAnswer{httpResult(204, "picture")}}) {
    view.setOverlayImage(std::make_shared<FakePicture>("before"));
    picture = failure;
    const std::string next = R"({"seq":1,"overlayV":)" + std::to_string(++version) + "}";
    tick(next);
    EXPECT_EQ(view.overlayImage, nullptr);
    tick(next);
  }
  EXPECT_EQ(fetched(), 4U) << "none is fetched again";
  EXPECT_EQ(platform.pictures.decoded, 0);
}

TEST_F(InkPolling, PictureSlowerThanThreeSecondsIsNone) {
  picture = {httpResult(200, "picture"), 3.5};
  tick(R"({"seq":1,"overlayV":1})");
  view.setOverlayImage(std::make_shared<FakePicture>("before"));
  platform.time.advance(4);
  EXPECT_EQ(view.overlayImage, nullptr);
}

TEST_F(InkPolling, FetchOfAPictureHoldsUpNoEvents) {
  picture = {httpResult(200, "picture"), 2.5};
  tick(R"({"seq":1,"overlayV":1})");
  tick(R"({"seq":2,"overlayV":1})");
  EXPECT_EQ(since(), 2);
  EXPECT_EQ(view.overlayImage, nullptr);
  platform.time.advance(2.6);
  EXPECT_NE(view.overlayImage, nullptr);
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
  tick(R"({"seq":1,"overlayV":2})");
  EXPECT_EQ(fetched(), 2U) << "the second version is known";
}

TEST_F(InkPolling, SlowDecodingDoesNotLetAnEarlierPictureWin) {
  platform.pictures.secondsPerPicture = 1;
  picture = {httpResult(200, "picture one")};
  tick(R"({"seq":1,"overlayV":1})");
  picture = {httpResult(404)};
  tick(R"({"seq":1,"overlayV":2})");
  platform.time.advance(2);
  EXPECT_EQ(view.overlayImage, nullptr);
}

TEST_F(InkPolling, PictureOnItsWayStillArrivesAfterClearing) {
  picture = {httpResult(200, "picture"), 1.0};
  tick(R"({"seq":9,"overlayV":1})");
  tick(R"({"seq":3})");
  platform.time.advance(2);
  EXPECT_EQ(pictureText(), "picture");
}

TEST_F(InkOfTheProgram, AnswersThatComeAfterItHasGoneAreDropped) {
  platform.pictures.secondsPerPicture = 1;
  answersWithAPictureAfter(1.0);
  platform.time.advance(1.0);
  ASSERT_GT(platform.http.requestsTo("/api/ink/overlay").size(), 0U);
  ASSERT_EQ(platform.pictures.decoded, 0);
  helper.reset();
  platform.time.advance(5);
  EXPECT_EQ(platform.pictures.decoded, 0);
}

TEST_F(InkOfTheProgram, PictureThatIsDecodedAfterItHasGoneIsDropped) {
  platform.pictures.secondsPerPicture = 1;
  answersWithAPictureAfter(0);
  platform.time.advance(3.5);
  EXPECT_EQ(platform.pictures.decoded, 1);
  helper.reset();
  platform.time.advance(5);
}

}  // namespace
}  // namespace torvane
