#include "fakes/engine_test.h"
#include "fakes/helper_test.h"

namespace torvane {
namespace {

class StatusPolling : public EngineTest {
 protected:
  bool runningAfter(FakeAnswer answer, double seconds = 0) {
    platform.http.server = [answer](const HttpRequest&) { return answer; };
    engine.checkStatus();
    platform.time.advance(seconds);
    return engine.isRunning();
  }
};

TEST_F(StatusPolling, AsksTheEnginesStateOnLoopbackOnly) {
  engine.checkStatus();
  ASSERT_EQ(platform.http.requests.size(), 1U);
  const auto& request = platform.http.requests[0];
  EXPECT_EQ(request.url, "http://127.0.0.1:8484/api/state");
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.idleTimeout, 2.0);
  EXPECT_EQ(request.onlyEndpoint, (HttpEndpoint{"127.0.0.1", 8484}));
}

TEST_F(StatusPolling, Any200MeansRunningWhoeverAnswers) {
  EXPECT_TRUE(runningAfter({httpResult(200, "I am some other program")}));
}

TEST_F(StatusPolling, OtherStatusesMeanNotRunning) {
  for (const int status : {201, 204, 206, 302, 404, 500}) {
    learn(200);
    EXPECT_FALSE(runningAfter({httpResult(status)})) << status;
  }
}

TEST_F(StatusPolling, TransportErrorMeansNotRunning) {
  learn(200);
  EXPECT_FALSE(runningAfter({httpError("refused")}));
}

TEST_F(StatusPolling, AnswerWhoseTransferFailsMeansNotRunning) {
  learn(200);
  HttpResult cut = httpResult(200);
  cut.error = "The connection was lost.";
  EXPECT_FALSE(runningAfter({cut}));
}

TEST_F(StatusPolling, EngineSlowerThanTwoSecondsCountsAsNotRunning) {
  EXPECT_TRUE(runningAfter({httpResult(200), 1.9}, 3));
  EXPECT_FALSE(runningAfter({httpResult(200), 2.1}, 3));
}

TEST_F(StatusPolling, TellsAfterEachProbe) {
  learn(200);
  learn(200);
  learn(500);
  EXPECT_EQ(timesLearnt, 3);
}

TEST_F(StatusPolling, OneFailedProbeIsEnough) {
  EXPECT_TRUE(runningAfter({httpResult(200)}));
  EXPECT_FALSE(runningAfter({httpError("refused")}));
}

TEST_F(StatusPolling, OverlappingProbesCountInTheOrderTheyComplete) {
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200), 1.0}; };
  engine.checkStatus();
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(500), 0.5}; };
  engine.checkStatus();
  platform.time.advance(0.6);
  EXPECT_FALSE(engine.isRunning());
  platform.time.advance(0.5);
  EXPECT_TRUE(engine.isRunning());
}

using StatusPollingOfTheProgram = HelperTest;

TEST_F(StatusPollingOfTheProgram, NeverRestartsADeadEngine) {
  launch();
  platform.time.advance(2);
  const auto started = platform.processes.launched.size();
  platform.processes.launched.back().process->exit(0);
  platform.time.advance(600);
  EXPECT_EQ(platform.processes.launched.size(), started);
}

}  // namespace
}  // namespace torvane
