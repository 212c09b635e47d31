#include "peer/masked_digits.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

TEST(MaskedDigits, LeaveOrdinaryNamesAlone) {
  for (const char* name : {"Ada's iPad", "iPad (2)", "iPad 12345", "iPad of Bo, 2024", "Boss SOS",
                           "iPad B12-I3", "教室二 iPad", "", "Il solo iPad 2 О 3"}) {
    EXPECT_EQ(withDigitsMasked(name), name);
  }
}

// What the other end shows is 482 913, or 480 913.
TEST(MaskedDigits, CannotBeBroughtAlongInAName) {
  EXPECT_EQ(withDigitsMasked("Ada's iPad · 482 913"), "Ada's iPad · ### ###");
  EXPECT_EQ(withDigitsMasked("482913"), "######");
  EXPECT_EQ(withDigitsMasked("482 iPad 913"), "### iPad ###");
  EXPECT_EQ(withDigitsMasked("4.8-2/9:1_3x"), "#.#-#/#:#_#x");
  EXPECT_EQ(withDigitsMasked("a4b8c2d9e1f3"), "a#b#c#d#e#f#");
  EXPECT_EQ(withDigitsMasked("iPad 2024-11-05"), "iPad ####-##-##");
}

TEST(MaskedDigits, AreThoseOfEveryScript) {
  EXPECT_EQ(withDigitsMasked("４８２ ９１３"), "### ###");
  EXPECT_EQ(withDigitsMasked("𝟒𝟖𝟐 𝟗𝟏𝟑"), "### ###");
  EXPECT_EQ(withDigitsMasked("④⑧② ⁹¹³"), "### ###");
  EXPECT_EQ(withDigitsMasked("٤٨٢ ٩١٣"), "### ###");
}

TEST(MaskedDigits, AreLettersAmongThemToo) {
  EXPECT_EQ(withDigitsMasked("Ada 48O 9l3"), "Ada ### ###");
  EXPECT_EQ(withDigitsMasked("Ada 4B0 9I\u00A03"), "Ada ### ##\u00A0#");
  EXPECT_EQ(withDigitsMasked("4 8 О 9 | З"), "# # # # # #");
  EXPECT_EQ(withDigitsMasked("48О·9І3"), "###·###");
}

}  // namespace
}  // namespace torvane
