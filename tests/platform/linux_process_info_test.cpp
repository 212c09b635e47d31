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

// A folder that a variable may name, below it and where the variable names none.
void expectFolder(const char* variable, std::string (LinuxProcessInfo::*folder)() const,
                  const std::string& name, const std::string& otherwise) {
  const char* given = ::getenv(variable);
  const std::string saved = given != nullptr ? given : "";
  ::setenv(variable, "/home/anna/own", 1);
  EXPECT_EQ((LinuxProcessInfo().*folder)(), "/home/anna/own/" + name);
  for (const char* odd : {"", "relative"}) {
    ::setenv(variable, odd, 1);
    const LinuxProcessInfo info;
    EXPECT_EQ((info.*folder)(), info.homeDirectory() + otherwise + name);
  }
  ::unsetenv(variable);
  if (given != nullptr) ::setenv(variable, saved.c_str(), 1);
}

TEST(LinuxProcessInfoTest, TemporaryFilesGoWhereOnlyTheUserMayWrite) {
  expectFolder("XDG_CACHE_HOME", &LinuxProcessInfo::temporaryDirectory, "torvane", "/.cache/");
}

TEST(LinuxProcessInfoTest, TheLogGoesWhereStateIsKept) {
  expectFolder("XDG_STATE_HOME", &LinuxProcessInfo::logDirectory, "torvane-p2p-helper",
               "/.local/state/");
}

}  // namespace
}  // namespace torvane
