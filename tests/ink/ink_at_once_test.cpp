// Ink that is asked for because something was sent to the engine, not because the timer says so.

#include "fakes/bridge_test.h"
#include "fakes/ink_test.h"

namespace torvane {
namespace {

class InkAtOnce : public InkTest {
 protected:
  static constexpr const char* kShow = R"({"seq":1,"presenting":true})";

  void SetUp() override {
    InkTest::SetUp();
    tick(kShow);
    platform.time.advance(1);
  }
  // Something was sent, and the engine answers a question with this body after so many seconds.
  void change(std::string_view body = kShow, double seconds = 0) {
    events = {httpResult(200, body), seconds};
    ink.engineDidTakeSomething();
    platform.time.runDue();
  }
};

TEST_F(InkAtOnce, IsAskedForWhileAShowIsPresented) {
  change(R"({"seq":2,"presenting":true,"events":[{"t":"begin","id":1,"x":0,"y":0}]})");
  EXPECT_EQ(asked(), 2U);
  EXPECT_EQ(view.order.size(), 1U);
}

TEST_F(InkAtOnce, IsNotAskedForWithoutAShow) {
  tick(R"({"seq":1,"presenting":false})");
  change();
  EXPECT_EQ(asked(), 2U);
  tick(kShow);
  change();
  EXPECT_EQ(asked(), 4U);
}

TEST_F(InkAtOnce, IsNotAskedForWhileTheEngineIsNotRunning) {
  serverRunning = false;
  change();
  EXPECT_EQ(asked(), 1U);
}

TEST_F(InkAtOnce, OneMoreQuestionIsRememberedWhileOneIsUnderWay) {
  events = {httpResult(200, kShow), 0.05};
  ink.inkTick();
  for (int i = 0; i < 5; ++i) change();
  EXPECT_EQ(asked(), 2U);
  platform.time.advance(0.05);
  EXPECT_EQ(asked(), 3U);
  platform.time.advance(10);
  EXPECT_EQ(asked(), 3U);
}

TEST_F(InkAtOnce, TheRememberedQuestionWaitsForNoTimer) {
  platform.mainQueue.sleeps = true;
  events = {httpResult(200, kShow), 0.05};
  ink.inkTick();
  change();
  platform.time.advance(0.05);  // an answer that changes nothing, which else would wake up nobody
  EXPECT_EQ(asked(), 3U);
}

TEST_F(InkAtOnce, AQuestionThatFollowsTheChangeAnywayIsEnough) {
  events = {httpResult(200, kShow), 0.004};
  ink.inkTick();
  change(kShow, 0.004);
  platform.time.advance(0.004);
  EXPECT_EQ(asked(), 3U);
  platform.time.advance(0.5);
  EXPECT_EQ(asked(), 3U);
}

TEST_F(InkAtOnce, ComesOnceInEightMillisecondsInAFlood) {
  for (int i = 0; i < 1000; ++i) {
    change();
    platform.time.advance(0.001);
  }
  EXPECT_LE(asked(), 1U + 126U);
  EXPECT_GE(asked(), 1U + 110U);
  const std::size_t before = asked();
  platform.time.advance(0.1);
  EXPECT_LE(asked(), before + 1) << "for the last change";
}

TEST_F(InkAtOnce, DoesNotCountForTheSearchOfTheShowsScreen) {
  const int searches = platform.windowServer.queries;
  for (int i = 0; i < 90; ++i) {
    platform.time.advance(0.01);
    change();
  }
  EXPECT_EQ(asked(), 91U);
  EXPECT_EQ(platform.windowServer.queries, searches);
  for (int i = 0; i < 23; ++i) tick(kShow);
  EXPECT_EQ(platform.windowServer.queries, searches);
  tick(kShow);
  EXPECT_EQ(platform.windowServer.queries, searches + 1) << "the 25th of the timer's answers";
}

TEST_F(InkAtOnce, HidesTheWindowWhenTheShowHasEnded) {
  change(R"({"seq":1,"presenting":false})");
  EXPECT_FALSE(shown.isVisible);
}

TEST_F(InkAtOnce, IsAskedForAgainAfterAnAnswerThatCannotBeRead) {
  events = {httpError("refused"), 0.05};
  ink.inkTick();
  change();
  platform.time.advance(0.05);
  EXPECT_EQ(asked(), 3U);
}

// An iPad's requests during a show.
class InkAfterRequests : public BridgeTest {
 protected:
  void SetUp() override {
    BridgeTest::SetUp();
    platform.http.server = [this](const HttpRequest& sent) {
      const bool isInk = sent.url.find("/api/ink/events") != std::string::npos;
      return isInk ? FakeAnswer{httpResult(200, R"({"seq":1,"presenting":true})")} : answer;
    };
    platform.time.advance(4);  // the engine is known to run and the show to be presented
  }
  std::size_t askedBy(const char* method) {
    const auto before = polls();
    request({{"id", ++id_}, {"path", "/api/x"}, {"method", method}});
    return polls() - before;
  }
  std::size_t polls() const {
    return static_cast<std::size_t>(std::count_if(
        platform.http.requests.begin(), platform.http.requests.end(),
        [](const auto& sent) { return sent.url.find("/api/ink/events") != std::string::npos; }));
  }
  FakeAnswer answer{httpResult(200, "{}")};

 private:
  int id_ = 0;
};

TEST_F(InkAfterRequests, IsAskedForAfterThoseThatMayChangeSomething) {
  EXPECT_EQ(askedBy("POST"), 1U);
  platform.time.advance(0.01);
  EXPECT_EQ(askedBy("PUT"), 1U);
}

TEST_F(InkAfterRequests, IsNotAskedForAfterSafeOnes) {
  EXPECT_EQ(askedBy("GET"), 0U);
  EXPECT_EQ(askedBy("HEAD"), 0U);
}

TEST_F(InkAfterRequests, IsNotAskedForWhenTheEngineDidNotAnswer) {
  answer = {httpError("refused")};
  EXPECT_EQ(askedBy("POST"), 0U);
}

}  // namespace
}  // namespace torvane
