#include "peer/peer_name.h"

#include <gtest/gtest.h>

#include <string>

namespace torvane {
namespace {

TEST(PeerName, IsOfAnyScript) {
  for (const char* name : {"A", "Zoë’s iPad", "日本語", "Ωmega 😀", "a&b_c <i>", "עברית"}) {
    EXPECT_TRUE(isAcceptablePeerName(name)) << name;
  }
  EXPECT_TRUE(isAcceptablePeerName(std::string(63, 'x')));
}

TEST(PeerName, MayNotChangeWhatIsShown) {
  for (const char* name :
       {"", "a\nb", "a\tb", "\x7F", "\xC2\x85", "\xC2\x9F", "\xD8\x9C", "a\xE2\x80\x8E",
        "a\xE2\x80\x8F", "a\xE2\x80\xA8", "a\xE2\x80\xA9", "a\xE2\x80\xAA", "a\xE2\x80\xAE",
        "a\xE2\x81\xA6", "a\xE2\x81\xA9", "\xC0\xAF", "\xED\xA0\x80", "\xFF"}) {
    EXPECT_FALSE(isAcceptablePeerName(name)) << name;
  }
  EXPECT_FALSE(isAcceptablePeerName(std::string_view("a\0b", 3)));
  EXPECT_FALSE(isAcceptablePeerName(std::string(64, 'x')));
}

TEST(PeerName, MayHaveTheNeighboursOfForbiddenCharacters) {
  for (const char* name :
       {" ", "~", "\xC2\xA0", "\xD8\x9B", "\xD8\x9D", "\xE2\x80\x8D", "\xE2\x80\x90",
        "\xE2\x80\xA7", "\xE2\x80\xAF", "\xE2\x81\xA5", "\xE2\x81\xAA"}) {
    EXPECT_TRUE(isAcceptablePeerName(name)) << name;
  }
}

}  // namespace
}  // namespace torvane
