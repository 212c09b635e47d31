#include "protocol/base64.h"

#include <gtest/gtest.h>

#include "protocol/json.h"
#include "support/vectors.h"

namespace torvane {
namespace {

// RFC 4648, section 10.
TEST(Base64, AgreesWithTheTestsOfRfc4648) {
  const std::pair<const char*, const char*> cases[] = {{"", ""},
                                                       {"f", "Zg=="},
                                                       {"fo", "Zm8="},
                                                       {"foo", "Zm9v"},
                                                       {"foob", "Zm9vYg=="},
                                                       {"fooba", "Zm9vYmE="},
                                                       {"foobar", "Zm9vYmFy"}};
  for (const auto& [plain, encoded] : cases) {
    EXPECT_EQ(base64Encode(asBytes(plain)), encoded);
    EXPECT_EQ(base64Decode(encoded), toBytes(plain));
  }
}

TEST(Base64, ReadsBackEveryLength) {
  Bytes bytes;
  for (unsigned length = 0; length < 300; ++length) {
    EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes);
    bytes.push_back(static_cast<std::uint8_t>(length * 37));
  }
}

TEST(Base64, UsesTheStandardAlphabet) {
  EXPECT_EQ(base64Encode(Bytes{0xFB, 0xEF, 0xFF}), "++//");
  EXPECT_FALSE(base64Decode("--__"));
}

TEST(Base64, RefusesWhiteSpace) {
  for (const char* text : {" Zm9v", "Zm9v ", "Zm 9v", "Zm9v\n", "Zm\n9v", "Zm9v\r\n", "\tZm9v"}) {
    EXPECT_FALSE(base64Decode(text)) << text;
  }
}

TEST(Base64, RefusesWrongPadding) {
  for (const char* text : {"Zg", "Zg=", "Zg===", "Zm8", "Zm8==", "Zm9v=", "Zm9v====", "=",
                           "====", "Z===", "Zg==Zg==", "=Zg=", "Z=g="}) {
    EXPECT_FALSE(base64Decode(text)) << text;
  }
}

TEST(Base64, RefusesBitsThatStandForNothing) {
  EXPECT_FALSE(base64Decode("Zh=="));
  EXPECT_FALSE(base64Decode("Zm9="));
}

TEST(Base64, RefusesEveryByteOutsideTheAlphabet) {
  const std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int byte = 0; byte < 256; ++byte) {
    const char character = static_cast<char>(byte);
    const bool allowed = alphabet.find(character) != std::string_view::npos;
    EXPECT_EQ(base64Decode(std::string("AA") + character + "A").has_value(), allowed) << byte;
  }
}

TEST(Base64, RefusesAZeroByte) {
  EXPECT_FALSE(base64Decode(std::string_view("Zm9v\0", 5)));
  EXPECT_FALSE(base64Decode(std::string_view("Zm\0v", 4)));
}

// The web's decoder forgives white space, missing padding and unused bits: of the texts that it
// takes, these are the ones that an encoder writes.
TEST(Base64, AcceptsOnlyTheCanonicalTextsOfTheWebPlatformTests) {
  const auto file = test::outsideVectors("wpt-base64/base64.json");
  if (!file) GTEST_SKIP() << test::kNoOutsideVectors;
  const auto cases = parseJson(test::readFile(*file));
  ASSERT_TRUE(cases && cases->is_array());
  ASSERT_EQ(cases->get_array().size(), 71U);
  std::vector<std::string> accepted;
  for (const auto& entry : cases->get_array()) {
    const std::string text(entry.at(0).as_string());
    const auto bytes = base64Decode(text);
    if (!bytes) continue;
    accepted.push_back(text);
    EXPECT_EQ(JsonValue(JsonArray(bytes->begin(), bytes->end())), entry.at(1)) << entry;
  }
  EXPECT_EQ(accepted, (std::vector<std::string>{"", "abcd", "abc=", "///A", "AAA/"}));
}

}  // namespace
}  // namespace torvane
