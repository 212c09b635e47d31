#include "torvane_ipad/load_tally.h"

#include <gtest/gtest.h>

#include "protocol/p2p_frame.h"
#include "torvane_ipad/load_run.h"

namespace torvane::ipad {
namespace {

using namespace std::chrono_literals;

const LoadTally::Time kStart{};

Bytes reply(std::int64_t id, std::int64_t status = 200, std::string_view body = "{}") {
  return *P2PFrame::encode({{"id", id}, {"status", status}, {"contentType", "application/json"}},
                           asBytes(body));
}

TEST(LoadTally, MatchesAnswersWithRequestsInAnyOrder) {
  LoadTally tally;
  tally.requestSent(1, kStart);
  tally.requestSent(2, kStart + 1ms);
  tally.frameReceived(reply(2), kStart + 3ms);
  EXPECT_EQ(tally.inFlight(), 1U);
  tally.frameReceived(reply(1), kStart + 10ms);
  EXPECT_EQ(tally.inFlight(), 0U);
  EXPECT_TRUE(tally.counts().isFaultless());
  EXPECT_EQ(tally.latencies().max(), 10ms);
  EXPECT_EQ(tally.latencies().percentile(1), 2ms);
}

TEST(LoadTally, CountsErrorStatusesAsFailed) {
  LoadTally tally;
  tally.requestSent(1, kStart);
  tally.frameReceived(reply(1, 502), kStart);
  EXPECT_EQ(tally.counts().answered, 1U);
  EXPECT_EQ(tally.counts().failed, 1U);
  EXPECT_FALSE(tally.counts().isFaultless());
}

TEST(LoadTally, CountsRequestsWithoutAnswerAsLost) {
  LoadTally tally;
  tally.requestSent(1, kStart);
  tally.requestSent(2, kStart + 5s);
  tally.expire(kStart + 1s);
  EXPECT_EQ(tally.counts().lost, 1U);
  EXPECT_EQ(tally.inFlight(), 1U);
  EXPECT_FALSE(tally.counts().isFaultless());
}

TEST(LoadTally, AnAnswerAfterGivingUpIsLateAndThenDoubled) {
  LoadTally tally;
  tally.requestSent(1, kStart);
  tally.expire(kStart + 1s);
  tally.frameReceived(reply(1), kStart + 2s);
  EXPECT_EQ(tally.counts().lost, 0U);
  EXPECT_EQ(tally.counts().late, 1U);
  tally.frameReceived(reply(1), kStart + 2s);
  EXPECT_EQ(tally.counts().doubled, 1U);
  EXPECT_FALSE(tally.counts().isFaultless());
}

TEST(LoadTally, CountsASecondAnswerAsDoubled) {
  LoadTally tally;
  tally.requestSent(5, kStart);
  tally.frameReceived(reply(5), kStart);
  tally.frameReceived(reply(5), kStart);
  EXPECT_EQ(tally.counts().answered, 1U);
  EXPECT_EQ(tally.counts().doubled, 1U);
}

TEST(LoadTally, CountsAnotherPeersAnswerAsMisdelivered) {
  LoadTally tally;
  tally.requestSent(firstLoadId(1), kStart);
  tally.frameReceived(reply(firstLoadId(2)), kStart);
  EXPECT_EQ(tally.counts().misdelivered, 1U);
  EXPECT_EQ(tally.inFlight(), 1U);
}

TEST(LoadTally, CountsAnAnswerToAnotherRequestAsMisdelivered) {
  LoadTally tally;
  tally.requestSent(1, kStart, {"1-1", 4});
  tally.frameReceived(reply(1, 200, R"({"slide":3,"notes":""})"), kStart);
  EXPECT_EQ(tally.counts().misdelivered, 1U);
  EXPECT_EQ(tally.counts().answered, 0U);
  EXPECT_EQ(tally.inFlight(), 0U);
}

TEST(LoadTally, CountsFramesThatAreNoAnswersAsBroken) {
  LoadTally tally;
  tally.frameReceived(asBytes("nonsense"), kStart);
  EXPECT_EQ(tally.counts().broken, 1U);
  EXPECT_FALSE(tally.counts().isFaultless());
}

TEST(LoadMark, ComparesAnEchoedMarkWhole) {
  const auto isAboutBody = [](std::string_view body) {
    return isAbout({"1-23", std::nullopt}, {1, 200, "", std::nullopt, toBytes(body)});
  };
  EXPECT_TRUE(isAboutBody("no echo"));
  EXPECT_TRUE(isAboutBody(R"({"query":"load=1-23"})"));
  EXPECT_FALSE(isAboutBody(R"({"query":"load=1-234"})"));
  EXPECT_FALSE(isAboutBody(R"({"query":"load=2-23"})"));
}

TEST(LoadRequest, CarriesItsMarkInTheQuery) {
  LoadPlan plan;
  plan.path = "/api/state";
  EXPECT_EQ(makeLoadRequest(plan, 2, 7).request.path, "/api/state?load=2-7");
  plan.path = "/api/ink/events?since=0";
  EXPECT_EQ(makeLoadRequest(plan, 2, 7).request.path, "/api/ink/events?since=0&load=2-7");
}

TEST(LoadRequest, GoesRoundTheSlides) {
  LoadPlan plan;
  plan.echoSlides = 3;
  for (std::uint64_t number = 1; number < 10; ++number) {
    const LoadRequest load = makeLoadRequest(plan, 1, number);
    ASSERT_TRUE(load.mark.slide);
    EXPECT_TRUE(*load.mark.slide >= 1 && *load.mark.slide <= 3);
    EXPECT_NE(load.mark.slide, makeLoadRequest(plan, 1, number + 1).mark.slide);
    EXPECT_NE(load.mark.slide, makeLoadRequest(plan, 2, number).mark.slide);
    EXPECT_TRUE(load.request.path.starts_with("/api/slides/" + std::to_string(*load.mark.slide) +
                                              "/notes?load="));
  }
}

}  // namespace
}  // namespace torvane::ipad
