#include "peer/peer_name.h"

#include <gtest/gtest.h>

#include <string>

namespace torvane {
namespace {

TEST(PeerName, IsOfAnyScript) {
  for (const char* name : {"A", "Zoë’s iPad", "日本語", "Ωmega 😀", "a&b_c <i>", "עברית",
                           "آيباد ليلى", "דף 2 iPad", "ᠮᠣᠩᠭᠣᠯ", "👍🏽", "\u0301"}) {
    EXPECT_EQ(shownPeerName(name), name);
  }
  EXPECT_EQ(shownPeerName(std::string(63, 'x')), std::string(63, 'x'));
}

TEST(PeerName, MayNotChangeWhatIsAsked) {
  for (const char* name : {"a\nb", "a\tb", "a\x7F", "a\xC2\x85", "a\xC2\x9F", "a\u2028", "a\u2029",
                           "\xC0\xAF", "\xED\xA0\x80", "\xFF"}) {
    EXPECT_FALSE(shownPeerName(name)) << name;
  }
  EXPECT_FALSE(shownPeerName(std::string_view("a\0b", 3)));
  EXPECT_FALSE(shownPeerName(std::string(64, 'x')));
}

TEST(PeerName, MayHaveTheNeighboursOfForbiddenCharacters) {
  for (const char* name : {"a ~", "a\u00A0", "a\u2027", "a\u202F"}) {
    EXPECT_EQ(shownPeerName(name), name);
  }
}

TEST(PeerName, ShowsSomething) {
  for (const char* name : {"",
                           " ",
                           "\u3000\u2003",
                           "\u00A0",
                           "\u200B",
                           "\u3164",
                           "\uFEFF",
                           "\u00AD",
                           "\u2060",
                           "\u115F\u1160",
                           "\u17B4\u17B5",
                           "\u180E",
                           "\u2800 \u2800",
                           "\uFFA0",
                           "\u034F",
                           "\u2065",
                           "\uFFF9\uFFFB",
                           "\u200D\u200C",
                           "\uFE0F",
                           "\U000E0100",
                           "\U000E0001",
                           "\U000E0069\U000E0050",
                           "\U000E0FFF",
                           "\U0001D173",
                           "\U0001BCA0",
                           "\u202E\u2069 \u061C"}) {
    EXPECT_FALSE(shownPeerName(name)) << name;
  }
}

// Nobody types these marks; systems put them around names that are written from the right.
TEST(PeerName, LosesItsMarksOfDirection) {
  for (const char* mark : {"\u061C", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C", "\u202D",
                           "\u202E", "\u2066", "\u2067", "\u2068", "\u2069"}) {
    EXPECT_EQ(shownPeerName(mark + std::string("האייפד של") + mark + " Ada" + mark),
              "האייפד של Ada");
  }
}

TEST(PeerName, LosesWhatShowsNothing) {
  EXPECT_EQ(shownPeerName("\uFEFFi\u200BP\u2060a\u00ADd\u3164"), "iPad");
  EXPECT_EQ(shownPeerName("iPad\U000E0041\U000E0064\U000E0061"), "iPad");
  EXPECT_EQ(shownPeerName("iPad\u2063\u206F\u2800"), "iPad");
}

TEST(PeerName, KeepsWhatShapesLettersAndEmoji) {
  for (const char* name :
       {"👩\u200D💻 Ada", "❤\uFE0F", "क्\u200Dष", "می\u200Cخواهم", "葛\U000E0100城",
        "🏴\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F Skye", "ᠨ\u180Eᠠ"}) {
    EXPECT_EQ(shownPeerName(name), name);
  }
}

}  // namespace
}  // namespace torvane
