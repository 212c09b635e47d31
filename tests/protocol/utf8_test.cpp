#include "protocol/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "protocol/json.h"
#include "support/vectors.h"

namespace torvane {
namespace {

std::string encodeCodePoint(std::uint32_t c) {
  const auto tail = [c](unsigned shift) { return static_cast<char>(0x80U | (c >> shift & 0x3FU)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xC0U | c >> 6U), tail(0)};
  if (c < 0x10000) return {static_cast<char>(0xE0U | c >> 12U), tail(6), tail(0)};
  return {static_cast<char>(0xF0U | c >> 18U), tail(12), tail(6), tail(0)};
}

struct Utf8Case {
  std::string number;
  bool valid;
  std::string text;
};

// One line of the outside tests: "number:valid:text", "number:valid hex:bytes" or
// "number:invalid hex:bytes:" and two repaired forms, with blanks here and there.
Utf8Case parseUtf8Case(const std::string& line) {
  const auto first = line.find(':');
  const auto second = line.find(':', first + 1);
  const std::string kind = line.substr(first + 1, second - first - 1);
  const std::string field = line.substr(second + 1, line.find(':', second + 1) - second - 1);
  const bool valid = kind.find("invalid") == std::string::npos;
  const bool hex = kind.find("hex") != std::string::npos;
  return {line.substr(0, first), valid, hex ? std::string(asText(test::fromHex(field))) : field};
}

std::vector<Utf8Case> readUtf8Cases(const std::filesystem::path& file) {
  std::vector<Utf8Case> cases;
  for (const auto& line : test::linesOf(test::readFile(file))) {
    if (!line.empty() && line[0] != '#') cases.push_back(parseUtf8Case(line));
  }
  return cases;
}

TEST(Utf8, AcceptsEveryCodePointButSurrogates) {
  for (std::uint32_t c = 0; c <= 0x110000; ++c) {
    const bool valid = c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    ASSERT_EQ(isValidUtf8(encodeCodePoint(c)), valid) << c;
  }
}

TEST(Utf8, TakesEveryCodePointOffTheFront) {
  for (std::uint32_t c = 0; c <= 0x10FFFF; ++c) {
    const std::string text = encodeCodePoint(c) + "x";
    std::string_view rest = text;
    const bool valid = c < 0xD800 || c > 0xDFFF;
    ASSERT_EQ(takeCharacter(rest), valid ? std::optional<char32_t>(c) : std::nullopt);
    ASSERT_EQ(rest, valid ? "x" : text);
  }
}

TEST(Utf8, TakesNothingOffAnEmptyOrMalformedText) {
  for (const std::string text : {"", "\x80", "\xE4\xBD", "\xFFx"}) {
    std::string_view rest = text;
    EXPECT_EQ(takeCharacter(rest), std::nullopt);
    EXPECT_EQ(rest, text);
  }
}

TEST(Utf8, RefusesEveryCutCharacter) {
  for (const std::uint32_t c : {0x80U, 0x7FFU, 0x800U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
    const std::string whole = encodeCodePoint(c);
    for (std::size_t length = 1; length < whole.size(); ++length) {
      EXPECT_FALSE(isValidUtf8(whole.substr(0, length)));
      EXPECT_FALSE(isValidUtf8(whole.substr(0, length) + "a"));
      EXPECT_FALSE(isValidUtf8(whole.substr(length)));
    }
  }
}

TEST(Utf8, RefusesOverlongForms) {
  for (const char* text : {"\xC0\x80", "\xC1\xBF", "\xE0\x80\xAF", "\xE0\x9F\xBF",
                           "\xF0\x80\x80\xAF", "\xF0\x8F\xBF\xBF"}) {
    EXPECT_FALSE(isValidUtf8(text));
  }
}

TEST(Utf8, AgreesWithTheOutsideTests) {
  const auto file = test::outsideVectors("utf8/utf8tests.txt");
  if (!file) GTEST_SKIP() << test::kNoOutsideVectors;
  const auto cases = readUtf8Cases(*file);
  EXPECT_EQ(cases.size(), 222U);
  for (const auto& [number, valid, text] : cases) {
    ASSERT_FALSE(text.empty()) << number;
    EXPECT_EQ(isValidUtf8(text), valid) << number;
  }
}

TEST(Utf8, DecidesWhatAHeaderMayHold) {
  const auto file = test::outsideVectors("utf8/utf8tests.txt");
  if (!file) GTEST_SKIP() << test::kNoOutsideVectors;
  for (const auto& [number, valid, text] : readUtf8Cases(*file)) {
    const bool hasControls = std::any_of(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
    const auto read = parseJson("[\"" + text + "\"]");
    EXPECT_EQ(read.has_value(), valid && !hasControls) << number;
    if (read) {
      EXPECT_EQ(read->at(0).as_string(), text);
    }
    EXPECT_EQ(serializeJson({{"text", text}}).has_value(), valid) << number;
  }
}

TEST(Utf8Prefix, KeepsATextThatFits) {
  EXPECT_EQ(utf8Prefix("", 0), "");
  EXPECT_EQ(utf8Prefix("abc", 3), "abc");
  EXPECT_EQ(utf8Prefix("abc", 100), "abc");
}

TEST(Utf8Prefix, NeverCutsACharacter) {
  const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z";  // 1, 2, 3, 4 and 1 bytes
  const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
  for (std::size_t most = 0; most <= text.size(); ++most) {
    EXPECT_EQ(utf8Prefix(text, most).size(), expected[most]) << most;
  }
}

TEST(Utf8Suffix, KeepsATextThatFits) {
  EXPECT_EQ(utf8Suffix("", 0), "");
  EXPECT_EQ(utf8Suffix("abc", 3), "abc");
  EXPECT_EQ(utf8Suffix("abc", 100), "abc");
}

TEST(Utf8Suffix, NeverCutsACharacter) {
  const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z";  // 1, 2, 3, 4 and 1 bytes
  const std::size_t expected[] = {0, 1, 1, 1, 1, 5, 5, 5, 8, 8, 10, 11};
  for (std::size_t most = 0; most <= text.size(); ++most) {
    EXPECT_EQ(utf8Suffix(text, most).size(), expected[most]) << most;
  }
}

}  // namespace
}  // namespace torvane
