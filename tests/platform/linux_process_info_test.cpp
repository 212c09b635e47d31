#include "platform/linux/linux_process_info.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <fstream>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

TEST(LinuxProcessInfoTest, PrefersThePrettyName) {
  const TemporaryFolder folder;
  std::ofstream(folder / "machine-info") << "CHASSIS=laptop\nPRETTY_HOSTNAME=\"Anna's Laptop\"\n";
  EXPECT_EQ(LinuxProcessInfo(folder / "machine-info").hostName(), "Anna's Laptop");
}

TEST(LinuxProcessInfoTest, ElseTheNetworkNameWithoutItsDomain) {
  const TemporaryFolder folder;
  std::array<char, 257> name{};
  ASSERT_EQ(::gethostname(name.data(), name.size() - 1), 0);
  const std::string expected = shortHostName(name.data());
  EXPECT_EQ(LinuxProcessInfo(folder / "none").hostName().value_or(""), expected);
}

TEST(LinuxProcessInfoTest, ReadsThePrettyNameAsAShellDoes) {
  EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME=plain"), "plain");
  EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME='it is\\n'\r\n"), "it is\\n");
  EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME=\"a \\\"b\\\" \\$c\" # note"), "a \"b\" $c");
  EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME=one\nPRETTY_HOSTNAME=two\n"), "two");
  EXPECT_EQ(prettyHostName("#PRETTY_HOSTNAME=none\nOTHER_PRETTY_HOSTNAME=x\n"), "");
  EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME=\"\n"), "");
  EXPECT_EQ(prettyHostName(""), "");
}

TEST(LinuxProcessInfoTest, CutsTheDomain) {
  EXPECT_EQ(shortHostName("box.example.org"), "box");
  EXPECT_EQ(shortHostName("box"), "box");
  EXPECT_EQ(shortHostName(""), "");
}

TEST(LinuxProcessInfoTest, KnowsHomeAndEnvironment) {
  const char* saved = ::getenv("HOME");
  const std::string home = saved != nullptr ? saved : "";
  ::setenv("HOME", "/home/anna//", 1);
  ::setenv("TORVANE_TEST_VALUE", "a=b", 1);
  const LinuxProcessInfo info;
  EXPECT_EQ(info.homeDirectory(), "/home/anna");
  EXPECT_EQ(info.environment().at("TORVANE_TEST_VALUE"), "a=b");
  EXPECT_EQ(info.processIdentifier(), ::getpid());
  ::setenv("HOME", "not absolute", 1);
  EXPECT_EQ(LinuxProcessInfo().homeDirectory().front(), '/');
  ::setenv("HOME", home.c_str(), 1);
  ::unsetenv("TORVANE_TEST_VALUE");
}

TEST(LinuxProcessInfoTest, TemporaryFilesGoWhereOnlyTheUserMayWrite) {
  const char* given = ::getenv("XDG_CACHE_HOME");
  const std::string saved = given != nullptr ? given : "";
  ::setenv("XDG_CACHE_HOME", "/home/anna/cache", 1);
  EXPECT_EQ(LinuxProcessInfo().temporaryDirectory(), "/home/anna/cache/torvane");
  for (const char* odd : {"", "relative"}) {
    ::setenv("XDG_CACHE_HOME", odd, 1);
    const LinuxProcessInfo info;
    EXPECT_EQ(info.temporaryDirectory(), info.homeDirectory() + "/.cache/torvane");
  }
  ::unsetenv("XDG_CACHE_HOME");
  if (given != nullptr) ::setenv("XDG_CACHE_HOME", saved.c_str(), 1);
}

}  // namespace
}  // namespace torvane
