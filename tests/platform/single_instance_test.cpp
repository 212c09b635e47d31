#include "platform/linux/single_instance.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "support/qt_event_loop.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

class SingleInstanceTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  const std::string session = folder / "session";
  const std::string bundle = "/opt/Torvane P2P Helper";

  // A launch while the event loop of the first one runs.
  bool secondLaunchGoesOn(const std::string& from) {
    bool goesOn = false;
    bool isDone = false;
    std::thread second([&] {
      goesOn = SingleInstance::claim(session, from) != nullptr;
      QMetaObject::invokeMethod(
          qApp, [&] { isDone = true; }, Qt::QueuedConnection);
    });
    EXPECT_TRUE(runEventsUntil([&] { return isDone; }));
    second.join();
    return goesOn;
  }
};

TEST_F(SingleInstanceTest, SecondLaunchShowsTheFirstAndEnds) {
  const auto first = SingleInstance::claim(session, bundle);
  ASSERT_NE(first, nullptr);
  int launches = 0;
  first->onSecondLaunch([&] { ++launches; });
  EXPECT_FALSE(secondLaunchGoesOn(bundle));
  EXPECT_EQ(launches, 1);
  EXPECT_FALSE(secondLaunchGoesOn(bundle));
  EXPECT_EQ(launches, 2);
}

TEST_F(SingleInstanceTest, CopyFromAnotherFolderGoesOn) {
  const auto first = SingleInstance::claim(session, bundle);
  first->onSecondLaunch([] { FAIL(); });
  EXPECT_TRUE(secondLaunchGoesOn("/home/ann/Downloads/Torvane P2P Helper"));
}

TEST_F(SingleInstanceTest, NextLaunchGoesOnAfterTheEnd) {
  SingleInstance::claim(session, bundle).reset();
  EXPECT_NE(SingleInstance::claim(session, bundle), nullptr);
}

TEST_F(SingleInstanceTest, LaunchDuringTheEndWaitsForIt) {
  auto first = SingleInstance::claim(session, bundle);
  bool goesOn = false;
  std::thread second([&] { goesOn = SingleInstance::claim(session, bundle) != nullptr; });
  first.reset();  // before or after it was asked, and without an answer
  second.join();
  EXPECT_TRUE(goesOn);
}

TEST_F(SingleInstanceTest, WhatAKilledProcessLeavesIsNoHindrance) {
  const int process = ::fork();
  if (process == 0) {
    static_cast<void>(SingleInstance::claim(session, bundle).release());
    ::raise(SIGKILL);
  }
  ::waitpid(process, nullptr, 0);
  EXPECT_FALSE(std::filesystem::is_empty(session));
  const auto next = SingleInstance::claim(session, bundle);
  ASSERT_NE(next, nullptr);
  int launches = 0;
  next->onSecondLaunch([&] { ++launches; });
  EXPECT_FALSE(secondLaunchGoesOn(bundle));
  EXPECT_EQ(launches, 1);
}

TEST_F(SingleInstanceTest, WithoutASessionFolderNobodyIsHeldOff) {
  const auto first = SingleInstance::claim("", bundle);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(SingleInstance::claim("", bundle), nullptr);
  EXPECT_NE(SingleInstance::claim("/proc/nowhere", bundle), nullptr);
}

TEST_F(SingleInstanceTest, KeepsItsFilesToItsUser) {
  namespace fs = std::filesystem;
  const auto first = SingleInstance::claim(session, bundle);
  EXPECT_EQ(fs::status(session).permissions(), fs::perms::owner_all);
  for (const auto& entry : fs::directory_iterator(session)) {
    EXPECT_LT(entry.path().filename().string().size(), 40U);
  }
}

}  // namespace
}  // namespace torvane
