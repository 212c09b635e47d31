#include "protocol/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

#include "support/vectors.h"

namespace torvane {
namespace {

constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();

std::string repeated(std::string_view text, std::size_t times) {
  std::string out;
  out.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) out += text;
  return out;
}

std::string nestedArrays(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

std::string nestedObjects(std::size_t depth) {
  return repeated(R"({"a":)", depth - 1) + "{}" + std::string(depth - 1, '}');
}

TEST(ParseJson, AgreesWithTheHostileTexts) {
  const auto cases = test::readVectorCases("hostile_json.txt");
  ASSERT_GE(cases.size(), 60U);
  for (const auto& [verdict, name, text] : cases) {
    ASSERT_TRUE(verdict == "yes" || verdict == "no") << name;
    EXPECT_EQ(parseJson(text).has_value(), verdict == "yes") << name;
  }
}

// y_ files must be read, n_ files refused; either is right for the i_ files. A frame's header
// must be an object besides.
TEST(ParseJson, AgreesWithTheJsonTestSuite) {
  const auto folder = test::outsideVectors("JSONTestSuite/test_parsing");
  if (!folder) GTEST_SKIP() << test::kNoOutsideVectors;
  std::map<char, int> count;
  for (const auto& entry : std::filesystem::directory_iterator(*folder)) {
    const std::string name = entry.path().filename().string();
    const std::string text = test::readFile(entry.path());
    const auto value = parseJson(text);
    ++count[name[0]];
    if (name[0] != 'i') {
      EXPECT_EQ(value.has_value(), name[0] == 'y') << name;
    }
    EXPECT_EQ(parseJsonObject(text).has_value(), value && value->is_object()) << name;
  }
  EXPECT_EQ(count['y'], 95);
  EXPECT_EQ(count['n'], 188);
}

TEST(ParseJson, Reads512LevelsAndRefusesMore) {
  EXPECT_TRUE(parseJson(nestedArrays(512)));
  EXPECT_FALSE(parseJson(nestedArrays(513)));
  EXPECT_TRUE(parseJson(nestedObjects(512)));
  EXPECT_FALSE(parseJson(nestedObjects(513)));
}

TEST(ParseJson, WritesBackWhatIs512LevelsDeep) {
  const std::string text = nestedObjects(512);
  EXPECT_EQ(serializeJson(parseJsonObject(text).value()), text);
}

TEST(ParseJson, RefusesAHundredThousandLevels) {
  EXPECT_FALSE(parseJson(nestedArrays(100'000)));
  EXPECT_FALSE(parseJson(nestedObjects(100'000)));
  EXPECT_FALSE(parseJson(std::string(100'000, '[')));
  EXPECT_FALSE(parseJson(repeated(R"({"a":)", 100'000)));
}

TEST(ParseJson, ReadsAMillionElements) {
  const auto list = parseJson("[" + repeated("0,", 999'999) + "0]");
  ASSERT_TRUE(list);
  EXPECT_EQ(list->get_array().size(), 1'000'000U);
}

TEST(ParseJson, CountsValuesOfEveryKind) {
  const std::string text = R"({"a":[1,-1,18446744073709551615,1.5,"x",true,null],"b":{}})";
  EXPECT_TRUE(parseJson(text, 10));
  EXPECT_FALSE(parseJson(text, 9));
  EXPECT_FALSE(parseJson("1", 0));
}

TEST(ParseJson, KeepsTheLastOfEqualKeys) {
  const auto object = parseJsonObject(R"({"id":1,"id":2})");
  ASSERT_TRUE(object);
  EXPECT_EQ(integerMember(*object, "id"), 2);
  EXPECT_EQ(object->size(), 1U);
}

TEST(ParseJson, ReadsNumbersLongerThanAnyBuffer) {
  const auto value = parseJson("[0." + std::string(200'000, '3') + "]");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->at(0).as_double(), 1.0 / 3);
  EXPECT_EQ(parseJson(std::string(400, '9'))->is_null(), true);
}

TEST(ParseJson, ReadsANumberTooLargeForADoubleAsMissing) {
  const auto object = parseJsonObject(R"({"x":1e400,"y":[-1e400],"id":1E309})");
  ASSERT_TRUE(object);
  EXPECT_EQ(numberMember(*object, "x"), std::nullopt);
  EXPECT_EQ(integerMember(*object, "id"), std::nullopt);
  EXPECT_TRUE(object->at("y").at(0).is_null());
}

TEST(ParseJson, ReadsANumberTooSmallForADoubleAsZero) {
  const auto value = parseJson("[1e-400,-1e-400,0e400,5e-324]");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->at(0).as_double(), 0.0);
  EXPECT_TRUE(std::signbit(value->at(1).as_double()));
  EXPECT_EQ(value->at(2).as_double(), 0.0);
  EXPECT_EQ(value->at(3).as_double(), std::numeric_limits<double>::denorm_min());
}

TEST(ParseJson, ReadsTheNearestDouble) {
  // Both are one unit in the last place away when digits are multiplied up naively.
  EXPECT_EQ(parseJson("[0.3456789012345678]")->at(0).as_double(), 0.3456789012345678);
  EXPECT_EQ(parseJson("[7.2057594037927933e16]")->at(0).as_double(), 72057594037927936.0);
}

TEST(SerializeJson, WritesDoublesThatReadBackExactly) {
  for (const double x : {0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308, -0.0, 1e21, 123456789.125}) {
    const auto text = serializeJson({{"x", x}});
    ASSERT_TRUE(text);
    const auto back = numberMember(parseJsonObject(*text).value(), "x");
    EXPECT_EQ(back, x) << *text;
    EXPECT_EQ(std::signbit(*back), std::signbit(x)) << *text;
  }
}

TEST(SerializeJson, WritesIntegersInFull) {
  EXPECT_EQ(serializeJson({{"a", kSmallest}, {"b", kLargest}}),
            R"({"a":-9223372036854775808,"b":9223372036854775807})");
}

TEST(SerializeJson, EscapesWhatJsonMustEscape) {
  EXPECT_EQ(serializeJson({{"a", std::string("\"\\\0\x1F\n", 5)}}),
            "{\"a\":\"\\\"\\\\\\u0000\\u001f\\n\"}");
}

TEST(JsonInteger, TakesNumbersThatAreExactIntegers) {
  const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
      {"3", 3},
      {"3.0", 3},
      {"3e0", 3},
      {"30e-1", 3},
      {"-3", -3},
      {"0", 0},
      {"-0", 0},
      {"-0.0", 0},
      {"1e3", 1000},
      {"9007199254740993", 9007199254740993},
      {"9223372036854775807", kLargest},
      {"-9223372036854775808", kSmallest},
      {"-9223372036854775808.0", kSmallest},
      {"9223372036854774784.0", 9223372036854774784},
      {"9223372036854775808", std::nullopt},
      {"9223372036854775807.0", std::nullopt},  // the nearest double is 2^63
      {"18446744073709551615", std::nullopt},
      {"18446744073709551616", std::nullopt},
      {"-9223372036854777856", std::nullopt},
      {"1e19", std::nullopt},
      {"-1e19", std::nullopt},
      {"1e400", std::nullopt},
      {"3.5", std::nullopt},
      {"-0.5", std::nullopt},
      {"5e-324", std::nullopt},
      {"true", std::nullopt},
      {"false", std::nullopt},
      {"null", std::nullopt},
      {"\"3\"", std::nullopt},
      {"[3]", std::nullopt},
      {"{}", std::nullopt}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(jsonInteger(parseJson(text).value()), expected) << text;
  }
}

TEST(JsonInteger, RefusesDoublesThatAreNotFinite) {
  EXPECT_FALSE(jsonInteger(JsonValue(std::numeric_limits<double>::infinity())));
  EXPECT_FALSE(jsonInteger(JsonValue(std::numeric_limits<double>::quiet_NaN())));
}

TEST(JsonMember, IsNoneWhenAbsentOrOfAnotherType) {
  const auto object = parseJsonObject(R"({"text":"a","number":1.5,"whole":2,"flag":true})").value();
  EXPECT_EQ(stringMember(object, "text"), "a");
  EXPECT_EQ(numberMember(object, "number"), 1.5);
  EXPECT_EQ(numberMember(object, "whole"), 2.0);
  EXPECT_EQ(integerMember(object, "whole"), 2);
  for (const char* key : {"number", "whole", "flag", "absent"}) {
    EXPECT_FALSE(stringMember(object, key)) << key;
  }
  for (const char* key : {"text", "flag", "absent"}) {
    EXPECT_FALSE(numberMember(object, key)) << key;
    EXPECT_FALSE(integerMember(object, key)) << key;
  }
}

TEST(JsonMember, KeepsAZeroInsideAString) {
  const auto object = parseJsonObject(R"({"a":"x\u0000y"})").value();
  EXPECT_EQ(stringMember(object, "a"), std::string("x\0y", 3));
}

}  // namespace
}  // namespace torvane
