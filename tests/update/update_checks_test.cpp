#include "update/update_checks.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

bool isOurs(std::string_view output) {
  return isSignedByTeam(output, "ZQ4W8N2HJT");
}

bool links(const std::string& path, const std::string& target) {
  return staysInside({{"ok", "fine"}, {path, target}});
}

TEST(SignedByTeam, OneLineNamesTheTeam) {
  EXPECT_TRUE(isOurs("Executable=/a/b\nTeamIdentifier=ZQ4W8N2HJT\nSealed Resources=none\n"));
  EXPECT_TRUE(isOurs("TeamIdentifier=ZQ4W8N2HJT"));
}

TEST(SignedByTeam, AnotherTeamIsRefused) {
  EXPECT_FALSE(isOurs("TeamIdentifier=AAAAAAAAAA\n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=not set\n"));
  EXPECT_FALSE(isOurs("Signature=adhoc\n"));
  EXPECT_FALSE(isOurs(""));
}

TEST(SignedByTeam, TeamMustBeTheWholeLine) {
  EXPECT_FALSE(isOurs("TeamIdentifier=ZQ4W8N2HJTX\n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=ZQ4W8N2HJT \n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=ZQ4W8N2HJT\r\n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=ZQ4W8N2HJ\n"));
  EXPECT_FALSE(isOurs("teamidentifier=ZQ4W8N2HJT\n"));
}

TEST(SignedByTeam, TeamInTheIdentifiersLineMeansNothing) {
  EXPECT_FALSE(isOurs("Identifier=TeamIdentifier=ZQ4W8N2HJT\nTeamIdentifier=AAAAAAAAAA\n"));
  EXPECT_FALSE(isOurs("Identifier=TeamIdentifier=ZQ4W8N2HJT\n"));
  EXPECT_FALSE(isOurs(" TeamIdentifier=ZQ4W8N2HJT\n"));
}

TEST(SignedByTeam, SecondLineThatNamesATeamIsRefused) {
  EXPECT_FALSE(isOurs("Executable=/a\nTeamIdentifier=ZQ4W8N2HJT\nTeamIdentifier=AAAAAAAAAA\n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=AAAAAAAAAA\nTeamIdentifier=ZQ4W8N2HJT\n"));
  EXPECT_FALSE(isOurs("TeamIdentifier=ZQ4W8N2HJT\nTeamIdentifier=ZQ4W8N2HJT\n"));
}

TEST(LinksOfAnApplication, MayLeadToWhatItHolds) {
  EXPECT_TRUE(staysInside({}));
  EXPECT_TRUE(links("current", "A"));
  EXPECT_TRUE(links("current", "./A//B/"));
  EXPECT_TRUE(links("Contents/Frameworks/A.framework/A", "Versions/Current/A"));
  EXPECT_TRUE(links("a/b/link", "../c"));
  EXPECT_TRUE(links("a/b/link", "../../c/d"));
  EXPECT_TRUE(links("a/link", ".."));
}

TEST(LinksOfAnApplication, MustNotClimbAboveIt) {
  EXPECT_FALSE(links("link", ".."));
  EXPECT_FALSE(links("link", "../x"));
  EXPECT_FALSE(links("a/b/link", "../../../x"));
  EXPECT_FALSE(links("a/link", "./.././.."));
}

TEST(LinksOfAnApplication, MustNotNameAPlace) {
  EXPECT_FALSE(links("link", "/etc/passwd"));
  EXPECT_FALSE(links("link", "/"));
  EXPECT_FALSE(links("link", ""));
}

// With a link "x" to ".", "x/.." is not where it seems to be.
TEST(LinksOfAnApplication, MustNotClimbBehindAName) {
  EXPECT_FALSE(links("link", "x/../y"));
  EXPECT_FALSE(links("a/b/link", "x/../.."));
  EXPECT_FALSE(links("a/b/link", "../x/.."));
}

TEST(DiskIsFull, IsReadFromWhatAToolSays) {
  for (const char* words :
       {"No space left on device", "Disc quota exceeded", "Disk quota exceeded"}) {
    EXPECT_TRUE(saysDiskIsFull("ditto: /a/b: " + std::string(words) + "\n")) << words;
  }
  EXPECT_FALSE(saysDiskIsFull("ditto: /a/b: Permission denied\n"));
  EXPECT_FALSE(saysDiskIsFull(""));
}

}  // namespace
}  // namespace torvane
