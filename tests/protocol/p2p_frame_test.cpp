#include "protocol/p2p_frame.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "support/signing_device.h"
#include "support/vectors.h"

namespace torvane {
namespace {

using test::frameOf;
using namespace std::literals;

std::optional<P2PFrame::Frame> decodeText(std::string_view text) {
  return P2PFrame::decode(asBytes(text));
}

TEST(P2PFrameDecode, RefusesHeaderOfNoBytes) {
  EXPECT_FALSE(decodeText("\0\0\0\0"sv));
}

TEST(P2PFrameDecode, ReadsEmptyObjectAndEmptyBody) {
  const auto frame = decodeText("\0\0\0\2{}"sv);
  ASSERT_TRUE(frame);
  EXPECT_TRUE(frame->header.empty());
  EXPECT_TRUE(frame->body.empty());
}

TEST(P2PFrameEncode, WritesLengthOfHeaderBigEndian) {
  const std::string text(300 - std::string_view(R"({"a":""})").size(), 'x');
  const Bytes frame = frameOf({{"a", text}}, toBytes("body"));
  EXPECT_EQ(frame.size(), 4U + 300U + 4U);
  EXPECT_EQ(Bytes(frame.begin(), frame.begin() + 4), (Bytes{0, 0, 1, 0x2C}));
}

TEST(P2PFrameDecode, ReadsLengthOfHeaderBigEndian) {
  const std::string header = R"({"a":")" + std::string(292, 'x') + R"("})";
  const auto frame = decodeText("\0\0\1\x2C"s + header + "body");
  ASSERT_TRUE(frame);
  EXPECT_EQ(asText(frame->body), "body");
  EXPECT_FALSE(decodeText("\x2C\1\0\0"s + header + "body"));
}

TEST(P2PFrameDecode, RefusesLengthPastTheEndThoughWhatIsThereWouldParse) {
  EXPECT_FALSE(decodeText("\0\0\0\3{}"sv));
  EXPECT_FALSE(decodeText("\xFF\xFF\xFF\xFF{}"sv));
}

TEST(P2PFrameDecode, RefusesHeaderThatIsAnArray) {
  EXPECT_FALSE(decodeText("\0\0\0\2[]"sv));
}

TEST(P2PFrameEncode, AddsNothingForAnEmptyBody) {
  const JsonObject header{{"id", 7}};
  const Bytes frame = frameOf(header);
  EXPECT_EQ(frame.size(), 4 + serializeJson(header)->size());
  const auto decoded = P2PFrame::decode(frame);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->header, header);
  EXPECT_TRUE(decoded->body.empty());
}

TEST(P2PFrameDecode, ReadsBodyThatIsItselfAFrame) {
  const auto outer = P2PFrame::decode(frameOf({{"out", 1}}, frameOf({{"in", 2}}, toBytes("x"))));
  ASSERT_TRUE(outer);
  const auto inner = P2PFrame::decode(outer->body);
  ASSERT_TRUE(inner);
  EXPECT_EQ(integerMember(inner->header, "in"), 2);
  EXPECT_EQ(asText(inner->body), "x");
}

TEST(P2PFrameDecode, KeepsEveryByteOfTheBody) {
  Bytes body;
  for (int byte = 255; byte >= 0; --byte) body.push_back(static_cast<std::uint8_t>(byte));
  const auto frame = P2PFrame::decode(frameOf({{"id", 1}}, body));
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->body, body);
}

TEST(P2PFrameDecode, GivesAViewIntoTheMessage) {
  const Bytes message = frameOf({{"id", 1}}, toBytes("body"));
  const auto view = P2PFrame::decodeView(message);
  ASSERT_TRUE(view);
  EXPECT_EQ(view->body.data(), message.data() + message.size() - 4);
  EXPECT_EQ(view->body.size(), 4U);
}

TEST(P2PFrameEncode, WritesTheHeaderCompact) {
  const Bytes frame = frameOf({{"id", 1}, {"list", JsonArray{1, "a", nullptr}}});
  EXPECT_EQ(asText(frame).substr(4), R"({"id":1,"list":[1,"a",null]})");
}

TEST(P2PFrameEncode, RefusesTextThatIsNotUtf8) {
  EXPECT_FALSE(P2PFrame::encode({{"error", "\xFF"}}, {}));
  EXPECT_FALSE(P2PFrame::encode({{"\xC0\xAF", 1}}, {}));
  EXPECT_FALSE(P2PFrame::encode({{"list", JsonArray{"\xED\xA0\x80"}}}, {}));
}

TEST(P2PFrameEncode, RefusesNumbersThatAreNotFinite) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(P2PFrame::encode({{"x", infinity}}, {}));
  EXPECT_FALSE(P2PFrame::encode({{"x", JsonObject{{"y", -infinity}}}}, {}));
  EXPECT_FALSE(P2PFrame::encode({{"x", std::numeric_limits<double>::quiet_NaN()}}, {}));
}

TEST(P2PFrameDecode, RefusesEveryShorterBeginning) {
  const Bytes frame = frameOf({{"id", 123456}, {"path", "/api/state"}});
  for (std::size_t length = 0; length < frame.size(); ++length) {
    EXPECT_FALSE(P2PFrame::decode(ByteView(frame).first(length))) << length;
  }
}

TEST(P2PFrameDecode, RefusesAHeaderOfTooManyValues) {
  JsonArray list(P2PFrame::kMaxHeaderValues - 2, nullptr);  // the list and the object count too
  EXPECT_TRUE(P2PFrame::decode(frameOf({{"list", list}})));
  list.emplace_back(1);
  EXPECT_FALSE(P2PFrame::decode(frameOf({{"list", list}})));
}

TEST(P2PFrameDecode, ReadsALongTextInAHeader) {
  const JsonObject header{{"path", std::string(4'000'000, ',')}};
  const auto frame = P2PFrame::decode(frameOf(header));
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->header, header);
}

TEST(P2PFrameDecode, AgreesWithTheHostileFrames) {
  const auto cases = test::readVectorCases("hostile_frames.txt");
  ASSERT_GE(cases.size(), 36U);
  for (const auto& [verdict, name, text] : cases) {
    ASSERT_TRUE(verdict == "frame" || verdict == "none") << name;
    EXPECT_EQ(decodeText(text).has_value(), verdict == "frame") << name;
  }
}

TEST(P2PFrameDecode, ReadsBackEveryNaughtyString) {
  const auto file = test::outsideVectors("blns/blns.json");
  if (!file) GTEST_SKIP() << test::kNoOutsideVectors;
  const auto list = parseJson(test::readFile(*file));
  ASSERT_TRUE(list && list->is_array());
  ASSERT_EQ(list->get_array().size(), 515U);
  for (const auto& text : list->get_array()) {
    const JsonObject header{{"name", text}, {text.as_string(), 1}};
    const auto frame = P2PFrame::decode(frameOf(header, toBytes("body")));
    ASSERT_TRUE(frame) << text;
    EXPECT_EQ(frame->header, header);
  }
}

}  // namespace
}  // namespace torvane
