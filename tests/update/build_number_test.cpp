#include "update/build_number.h"

#include <gtest/gtest.h>

#include "protocol/numeric_characters.h"

namespace torvane {
namespace {

using std::weak_ordering;

std::optional<std::string> parsed(std::string_view text) {
  return parseBuildNumber(asBytes(text));
}

TEST(BuildNumber, IsReadWithSpacesBeforeAndALineFeedAfter) {
  EXPECT_EQ(parsed("  412\n"), "412");
}

TEST(BuildNumber, MayStandAmongWhiteSpaceOfEveryKind) {
  EXPECT_EQ(parsed("\t\r\n\v\f 412 \f\v\r\n\t"), "412");
  EXPECT_EQ(parsed("\u0085\u00A0\u2003\u2028412\u3000\u2029\u202F"), "412");
}

TEST(BuildNumber, IsKeptAsWritten) {
  EXPECT_EQ(parsed("0"), "0");
  EXPECT_EQ(parsed("00412"), "00412");
}

TEST(BuildNumber, WithADotOrALetterIsRefused) {
  EXPECT_EQ(parsed("4.12"), std::nullopt);
  EXPECT_EQ(parsed("412a"), std::nullopt);
}

TEST(BuildNumber, WithASignOrWhiteSpaceInsideIsRefused) {
  for (const char* text : {"-412", "+412", "4 12", "4\n12", "412\n413", "4,12", "0x19C", "4e2"}) {
    EXPECT_EQ(parsed(text), std::nullopt) << text;
  }
}

TEST(BuildNumber, MustNotBeEmpty) {
  EXPECT_EQ(parsed(""), std::nullopt);
  EXPECT_EQ(parsed(" \n"), std::nullopt);
}

TEST(BuildNumber, MustBeShorterThan32Characters) {
  const std::string longest(31, '9');
  EXPECT_EQ(parsed(longest), longest);
  EXPECT_EQ(parsed(longest + "9"), std::nullopt);
}

TEST(BuildNumber, LengthIsCountedInCharacters) {
  std::string text;
  for (int i = 0; i < 31; ++i) text += "٤";  // two bytes each
  EXPECT_EQ(parsed(text), text);
  EXPECT_EQ(parsed(text + "٤"), std::nullopt);
}

TEST(BuildNumber, MayBeOfAnyCharactersThatAreNumbers) {
  for (const char* text : {"٤١٢", "４１２", "½", "Ⅷ", "²", "四百十二", "①", "𝟜𝟙𝟚"}) {
    EXPECT_EQ(parsed(text), text);
  }
}

TEST(BuildNumber, OtherCharactersAreRefused) {
  for (const char* text : {"4\u0301", "\uFEFF412", "4\u200B12", "人", "Ａ", "٪"}) {
    EXPECT_EQ(parsed(text), std::nullopt) << text;
  }
  EXPECT_EQ(parsed({"4\0"
                    "12",
                    4}),
            std::nullopt);
}

TEST(BuildNumber, MustBeUtf8) {
  EXPECT_EQ(parsed("412\xFF"), std::nullopt);
  EXPECT_EQ(parsed("\xD9"), std::nullopt);
}

TEST(BuildNumber, IsComparedByValue) {
  EXPECT_EQ(compareBuilds("100", "99"), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("99", "100"), weak_ordering::less);
  EXPECT_EQ(compareBuilds("412", "412"), weak_ordering::equivalent);
}

TEST(BuildNumber, LeadingZerosMeanNothing) {
  EXPECT_EQ(compareBuilds("000412", "412"), weak_ordering::equivalent);
  EXPECT_EQ(compareBuilds("0", "000"), weak_ordering::equivalent);
  EXPECT_EQ(compareBuilds("0099", "100"), weak_ordering::less);
}

TEST(BuildNumber, ValueMayBeOfAnyLength) {
  const std::string large(31, '9');
  const std::string larger = "1" + std::string(31, '0');
  EXPECT_EQ(compareBuilds(larger, large), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("18446744073709551616", "18446744073709551615"), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("18446744073709551616", "0"), weak_ordering::greater);
}

TEST(BuildNumber, DigitsOfAllScriptsHaveTheirValue) {
  EXPECT_EQ(compareBuilds("٤١٣", "412"), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("４１２", "412"), weak_ordering::equivalent);
  EXPECT_EQ(compareBuilds("٩٩", "100"), weak_ordering::less);
}

TEST(BuildNumber, OtherNumbersCompareByTheirCode) {
  EXPECT_EQ(compareBuilds("Ⅸ", "Ⅷ"), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("½", "½"), weak_ordering::equivalent);
  EXPECT_EQ(compareBuilds("4½", "4"), weak_ordering::greater);
  EXPECT_EQ(compareBuilds("4½10", "4½9"), weak_ordering::greater);
}

TEST(BuildNumber, NothingIsLessThanAnything) {
  EXPECT_EQ(compareBuilds("", "0"), weak_ordering::less);
  EXPECT_EQ(compareBuilds("", ""), weak_ordering::equivalent);
}

TEST(BuildNumber, ComparingEndsAtWhatIsNoText) {
  EXPECT_EQ(compareBuilds("4\xFF", "4\xFF"), weak_ordering::equivalent);
  EXPECT_EQ(compareBuilds("5\xFF", "4\xFF"), weak_ordering::greater);
}

TEST(NumericCharacters, AreAsManyAsUnicodeHas) {
  int numeric = 0;
  int digits = 0;
  int sum = 0;
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    numeric += isNumericCharacter(c) ? 1 : 0;
    const auto digit = decimalDigit(c);
    digits += digit ? 1 : 0;
    sum += digit.value_or(0);
    ASSERT_TRUE(!digit || isNumericCharacter(c)) << static_cast<unsigned>(c);
  }
  EXPECT_EQ(numeric, 1872);
  EXPECT_EQ(digits, 660);
  EXPECT_EQ(sum, 66 * 45);
}

}  // namespace
}  // namespace torvane
