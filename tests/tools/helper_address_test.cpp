#include "torvane_ipad/helper_address.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "torvane_ipad/reach_helper.h"

namespace torvane::ipad {
namespace {

const std::string kFingerprint(64, 'c');

std::string runtimeFile(const std::string& port, const std::string& fingerprint,
                        const std::string& pid) {
  return R"({"port":)" + port + R"(,"fingerprint":")" + fingerprint + R"(","name":"Mini","pid":)" +
         pid + "}";
}

std::string ownPid() {
  return std::to_string(::getpid());
}

TEST(HelperAddress, WritesAndReadsHostAndPort) {
  for (const char* text : {"mini.local:48484", "127.0.0.1:1", "[::1]:65535"}) {
    const auto address = parseAddress(text);
    ASSERT_TRUE(address) << text;
    EXPECT_EQ(address->text(), text);
  }
  for (const char* text : {"", "mini", ":1", "mini:", "mini:0", "mini:65536", "mini:1x"}) {
    EXPECT_FALSE(parseAddress(text)) << text;
  }
}

TEST(RuntimeFile, NamesTheHelperOfThisComputer) {
  const auto helper = parseRuntimeFile(runtimeFile("48485", kFingerprint, ownPid()));
  ASSERT_TRUE(helper);
  EXPECT_EQ(helper->text(), "127.0.0.1:48485");
  EXPECT_EQ(helper->fingerprint, kFingerprint);
  EXPECT_EQ(helper->name, "Mini");
}

TEST(RuntimeFile, IsIgnoredWhenItIsDamaged) {
  EXPECT_FALSE(parseRuntimeFile(""));
  EXPECT_FALSE(parseRuntimeFile(runtimeFile("0", kFingerprint, ownPid())));
  EXPECT_FALSE(parseRuntimeFile(runtimeFile("65536", kFingerprint, ownPid())));
  EXPECT_FALSE(parseRuntimeFile(runtimeFile("48484", "", ownPid())));
}

TEST(RuntimeFile, IsIgnoredWhenItsHelperHasGone) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  ASSERT_GT(child, 0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_FALSE(parseRuntimeFile(runtimeFile("48484", kFingerprint, std::to_string(child))));
}

TEST(DisplayName, FitsTheLinkWithItsNumber) {
  EXPECT_TRUE(defaultDisplayName().starts_with("iPad of "));
  EXPECT_LE(defaultDisplayName().size(), 63U);
  EXPECT_EQ(numberedName("iPad", 0), "iPad");
  EXPECT_EQ(numberedName("iPad", 12), "iPad (12)");
  std::string longName;
  for (int i = 0; i < 21; ++i) longName += "\u20AC";  // three bytes each
  EXPECT_EQ(numberedName(longName, 100).size(), 57U + 6U);
}

}  // namespace
}  // namespace torvane::ipad
