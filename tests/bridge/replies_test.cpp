#include "bridge/replies.h"

#include <gtest/gtest.h>

#include "protocol/p2p_frame.h"

namespace torvane {
namespace {

P2PFrame::Frame decoded(const std::optional<Bytes>& reply) {
  auto frame = P2PFrame::decode(reply.value());
  return std::move(frame.value());
}

TEST(EngineReply, PassesStatusTypeAndBodyOn) {
  const auto frame =
      decoded(engineReply(9, {HttpResponse{404, "text/html"}, toBytes("gone"), std::nullopt}));
  const JsonObject expected = {{"id", 9}, {"status", 404}, {"contentType", "text/html"}};
  EXPECT_EQ(frame.header, expected);
  EXPECT_EQ(asText(frame.body), "gone");
}

TEST(EngineReply, WithoutAContentTypeIsAnOctetStream) {
  const auto frame = decoded(engineReply(1, {HttpResponse{200, std::nullopt}, {}, std::nullopt}));
  EXPECT_EQ(stringMember(frame.header, "contentType"), "application/octet-stream");
}

TEST(EngineReply, WithoutAResponseIs502WithTheReason) {
  const auto frame = decoded(engineReply(1, {std::nullopt, {}, "refused"}));
  const JsonObject expected = {{"id", 1},
                               {"status", 502},
                               {"contentType", "application/octet-stream"},
                               {"error", "refused"}};
  EXPECT_EQ(frame.header, expected);
  EXPECT_TRUE(frame.body.empty());
}

TEST(EngineReply, ErrorCanAccompanyAnyStatus) {
  const auto frame = decoded(engineReply(1, {HttpResponse{200, "a/b"}, {}, "cut short"}));
  EXPECT_EQ(integerMember(frame.header, "status"), 200);
  EXPECT_EQ(stringMember(frame.header, "error"), "cut short");
}

TEST(EngineReply, ThatCannotBeWrittenAsJsonIsNone) {
  EXPECT_FALSE(engineReply(1, {HttpResponse{200, "\xFF"}, {}, std::nullopt}));
}

TEST(EngineReply, KeepsTheLargestIdExact) {
  const auto frame = decoded(engineReply(INT64_MAX, {std::nullopt, {}, std::nullopt}));
  EXPECT_EQ(integerMember(frame.header, "id"), INT64_MAX);
}

TEST(EngineReply, ThatIsLongerThanTheLinkCarriesIs502WithTheReason) {
  const HttpResult answer{HttpResponse{200, "image/png"}, Bytes(1000), std::nullopt};
  const std::size_t size = engineReply(4, answer).value().size();
  EXPECT_EQ(decoded(engineReplyWithin(size, 4, answer)).body.size(), 1000U);
  const auto frame = decoded(engineReplyWithin(size - 1, 4, answer));
  const JsonObject expected = {{"id", 4},
                               {"status", 502},
                               {"contentType", "application/octet-stream"},
                               {"error", "The answer is too long to be sent to the device."}};
  EXPECT_EQ(frame.header, expected);
  EXPECT_TRUE(frame.body.empty());
}

TEST(LocalReply, IsJsonWithStatus200) {
  const auto frame = decoded(localReply(3, {{"version", "412"}}));
  const JsonObject expected = {{"id", 3}, {"status", 200}, {"contentType", "application/json"}};
  EXPECT_EQ(frame.header, expected);
  EXPECT_EQ(asText(frame.body), R"({"version":"412"})");
}

}  // namespace
}  // namespace torvane
