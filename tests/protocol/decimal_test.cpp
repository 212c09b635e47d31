#include "protocol/decimal.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <string>

namespace torvane {
namespace {

// Whether the text reads as the double that strtod gives in the C locale, bit for bit, or as none
// where that is infinite.
testing::AssertionResult readsLikeStrtod(const std::string& text) {
  const double expected = std::strtod(text.c_str(), nullptr);
  const auto value = parseDecimal(text);
  if (!std::isfinite(expected)) {
    if (!value) return testing::AssertionSuccess();
  } else if (value &&
             std::bit_cast<std::uint64_t>(*value) == std::bit_cast<std::uint64_t>(expected)) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << text << " reads as " << value.value_or(NAN);
}

std::string scientific(long double value, int precision) {
  std::array<char, 1024> text{};
  std::snprintf(text.data(), text.size(), "%.*Le", precision, value);
  return text.data();
}

std::string fixed(double value, int precision) {
  std::array<char, 1024> text{};
  std::snprintf(text.data(), text.size(), "%.*f", precision, value);
  return text.data();
}

// Any finite double, every bit pattern as likely as another.
double randomDouble(std::mt19937_64& random) {
  for (;;) {
    const auto value = std::bit_cast<double>(random());
    if (std::isfinite(value)) return value;
  }
}

TEST(ParseDecimal, ReadsRandomDoublesLikeStrtod) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100'000; ++i) {
    ASSERT_TRUE(readsLikeStrtod(scientific(randomDouble(random), i % 25)));
  }
}

TEST(ParseDecimal, ReadsOrdinaryNumbersLikeStrtod) {
  std::mt19937_64 random(2);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int i = 0; i < 100'000; ++i) {
    const double scale = std::pow(10, i % 7);
    ASSERT_TRUE(readsLikeStrtod(fixed(unit(random) * scale, i % 19)));
  }
}

TEST(ParseDecimal, ReadsDigitsAndExponentsAtRandomLikeStrtod) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 100'000; ++i) {
    std::string text = random() % 2 == 0 ? "-" : "";
    text += std::to_string(random() >> random() % 64);
    if (random() % 2 == 0) text += "." + std::to_string(random());
    text += "e" + std::to_string(static_cast<int>(random() % 700) - 360);
    ASSERT_TRUE(readsLikeStrtod(text));
  }
}

// The exact middle between two doubles has up to 767 digits; it and the decimals next to it decide
// which way to round. A long double of 64 bits holds the middle.
TEST(ParseDecimal, ReadsTheMiddleBetweenTwoDoublesLikeStrtod) {
  if (std::numeric_limits<long double>::digits < 64) GTEST_SKIP() << "long double is too short";
  std::mt19937_64 random(4);
  for (int i = 0; i < 5'000; ++i) {
    const double below = std::abs(randomDouble(random));
    const double above = std::nextafter(below, std::numeric_limits<double>::infinity());
    const long double middle = (static_cast<long double>(below) + above) / 2;
    std::string text = scientific(middle, 770);
    const auto exponent = text.find('e');
    ASSERT_TRUE(readsLikeStrtod(text));
    ASSERT_TRUE(readsLikeStrtod(text.insert(exponent, "1")));
    const auto digit = text.find_last_of("123456789", exponent - 1);
    --text[digit];
    ASSERT_TRUE(readsLikeStrtod(text));
  }
}

TEST(ParseDecimal, ReadsSubnormalsLikeStrtod) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 20'000; ++i) {
    const auto value = std::bit_cast<double>(random() >> 12U >> random() % 52);
    ASSERT_TRUE(readsLikeStrtod(scientific(value, i % 25)));
  }
}

TEST(ParseDecimal, ReadsWhatIsTooSmallAsZeroOfItsSign) {
  for (const char* text : {"1e-400", "2.4703282292062327e-324", "0.0e-999999999", "1e-999999999"}) {
    EXPECT_EQ(parseDecimal(text), 0.0) << text;
    EXPECT_FALSE(std::signbit(*parseDecimal(text))) << text;
    EXPECT_TRUE(std::signbit(*parseDecimal("-" + std::string(text)))) << text;
  }
}

TEST(ParseDecimal, RoundsUpToTheSmallestSubnormal) {
  EXPECT_EQ(parseDecimal("2.4703282292062328e-324"), std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(parseDecimal("5e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(ParseDecimal, IsNoneWhenTooLarge) {
  for (const char* text : {"1e400", "-1e400", "1.7976931348623159e308", "1e309", "1e999999999"}) {
    EXPECT_EQ(parseDecimal(text), std::nullopt) << text;
  }
  EXPECT_EQ(parseDecimal(std::string(400, '9')), std::nullopt);
  EXPECT_EQ(parseDecimal("1.7976931348623158e308"), std::numeric_limits<double>::max());
}

TEST(ParseDecimal, LooksAtTheWholeNumberToTellTooSmallFromTooLarge) {
  const std::string zeros(400, '0');
  for (const auto& [text, value] :
       std::initializer_list<std::pair<std::string, double>>{{"0." + zeros + "1", 0},
                                                             {"1" + zeros + "e-400", 1},
                                                             {"1" + zeros + "e-800", 0},
                                                             {"0." + zeros + "1e+401", 1},
                                                             {"1e-99999999999999999999", 0},
                                                             {"1e-9223372036854775808", 0},
                                                             {"0e99999999999999999999", 0}}) {
    EXPECT_EQ(parseDecimal(text), value) << text;
  }
  for (const std::string& text :
       {"1" + zeros, "0." + zeros + "1e+800", "12345" + zeros + ".5e1",
        std::string("1e+99999999999999999999"), std::string("1e9223372036854775807")}) {
    EXPECT_EQ(parseDecimal(text), std::nullopt) << text;
  }
}

TEST(ParseDecimal, KeepsTheSignOfZero) {
  EXPECT_TRUE(std::signbit(*parseDecimal("-0")));
  EXPECT_TRUE(std::signbit(*parseDecimal("-0.0")));
  EXPECT_FALSE(std::signbit(*parseDecimal("0.0")));
}

TEST(ParseDecimal, IsNoneForWhatIsNotANumber) {
  for (const char* text :
       {"",     "-",        "a",   "1a",  "1.5 ",   " 1.5",  "1,5", ".5",  "5.", "inf",
        "-inf", "infinity", "nan", "NAN", "nan(1)", "0x1p3", "1e",  "1e+", "+1", "--1"}) {
    EXPECT_EQ(parseDecimal(text), std::nullopt) << text;
  }
}

struct CommaPunctuation : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ParseDecimal, ReadsTheSameInEveryLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
  const auto plain = parseDecimal("1234.5");
  const auto small = parseDecimal("1234.5e-400");
  std::locale::global(before);
  EXPECT_EQ(plain, 1234.5);
  EXPECT_EQ(small, 0.0);
}

}  // namespace
}  // namespace torvane
