// What a child is given, and what it writes.

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "platform/posix/output_pipe.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix_child_process_fixture.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

using PosixChildOutputTest = PosixChildProcessTest;

TEST_F(PosixChildOutputTest, MergesBothOutputsInTheOrderWritten) {
  EXPECT_EQ(outputOf(shell("echo 1; echo 2 >&2; echo 3; echo 4 >&2")), "1\n2\n3\n4\n");
}

TEST_F(PosixChildOutputTest, PassesArgumentsUnchanged) {
  ProcessLaunch launch;
  launch.executable = "/usr/bin/printf";
  launch.arguments = {"[%s]", "a b", "$HOME `id`", "", "\xc3\xa4\n"};
  launch.output = ProcessOutput::pipe;
  EXPECT_EQ(outputOf(launch), "[a b][$HOME `id`][][\xc3\xa4\n]");
}

TEST_F(PosixChildOutputTest, InheritsTheEnvironmentUnlessOneIsGiven) {
  ::setenv("TORVANE_TEST_INHERITED", "here", 1);
  ProcessLaunch launch = shell("echo \"$TORVANE_TEST_INHERITED,$OTHER\"");
  EXPECT_EQ(outputOf(launch), "here,\n");
  launch.environment = Environment{{"OTHER", "a=b c"}};
  EXPECT_EQ(outputOf(launch), ",a=b c\n");
  ::unsetenv("TORVANE_TEST_INHERITED");
}

TEST_F(PosixChildOutputTest, StandardInputIsTheNullDevice) {
  EXPECT_EQ(outputOf(shell("cat; readlink /proc/self/fd/0")), "/dev/null\n");
}

TEST_F(PosixChildOutputTest, OutputMayGoToTheNullDevice) {
  TemporaryFolder folder;
  const std::string seen = folder / "seen";
  const std::string script =
      "links=$(readlink /proc/$$/fd/1 /proc/$$/fd/2); echo \"$links\" >" + seen + "; echo lost";
  const auto process = start(shell(script, ProcessOutput::nullDevice));
  EXPECT_EQ(process->waitUntilExit(), 0);
  EXPECT_EQ(asText(PosixFileSystem().openForReading(seen)->read(100)), "/dev/null\n/dev/null\n");
  EXPECT_TRUE(process->readOutputToEnd().empty());
}

TEST_F(PosixChildOutputTest, OutputMayGoToAFileThatBothAppendTo) {
  TemporaryFolder folder;
  PosixFileSystem files;
  ASSERT_TRUE(files.createFile(folder / "log"));
  auto log = files.openForWriting(folder / "log");
  ASSERT_TRUE(log->write("banner\n"));
  ProcessLaunch launch = shell("echo out; echo err >&2", ProcessOutput::file);
  launch.outputFile = log.get();
  const auto process = start(launch);
  EXPECT_EQ(process->waitUntilExit(), 0);
  ASSERT_TRUE(log->write("after\n"));
  EXPECT_EQ(asText(files.openForReading(folder / "log")->read(100)), "banner\nout\nerr\nafter\n");
}

TEST_F(PosixChildOutputTest, AMissingOutputFileIsALaunchError) {
  const LaunchResult result = launcher.launch(shell("true", ProcessOutput::file), nullptr);
  EXPECT_EQ(result.process, nullptr);
  EXPECT_FALSE(result.error.empty());
}

TEST_F(PosixChildOutputTest, AWatchdogMayEndABlockedRead) {
  const auto process = start(shell("exec sleep 600"));
  std::thread watchdog([process] { process->terminate(); });
  EXPECT_TRUE(process->readOutputToEnd().empty());
  EXPECT_EQ(process->waitUntilExit(), SIGTERM);
  watchdog.join();
}

TEST_F(PosixChildOutputTest, DoesNotWaitForAGrandchildThatHoldsThePipe) {
  const auto begin = std::chrono::steady_clock::now();
  const auto process = start(shell("sleep 600 & echo $!; exit 4"));
  const std::string output(asText(process->readOutputToEnd()));
  EXPECT_EQ(process->waitUntilExit(), 4);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kPatience);
  const pid_t grandchild = std::atoi(output.c_str());
  ASSERT_GT(grandchild, 1);
  EXPECT_EQ(::kill(grandchild, SIGKILL), 0);
}

TEST_F(PosixChildOutputTest, AGrandchildThatNeverStopsWritingIsNotDrainedForEver) {
  const auto process = start(shell("yes grandchild & echo parent; exit 2"));
  EXPECT_NE(asText(process->readOutputToEnd()).find("parent\n"), std::string_view::npos);
  EXPECT_EQ(process->waitUntilExit(), 2);
}

TEST_F(PosixChildOutputTest, StopsReadingWhenTheChildClosesItsPipe) {
  const auto process = start(shell("echo said; exec >/dev/null 2>&1; exec sleep 600"));
  EXPECT_EQ(asText(process->readOutputToEnd()), "said\n");
  EXPECT_TRUE(process->isRunning());
  process->terminate();
  EXPECT_EQ(process->waitUntilExit(), SIGTERM);
}

TEST_F(PosixChildOutputTest, TakesOutputThatWasThereBeforeReadingBegan) {
  const auto process = start(shell("echo early; exit 0"));
  process->waitUntilExit();
  EXPECT_EQ(asText(process->readOutputToEnd()), "early\n");
  EXPECT_TRUE(process->readOutputToEnd().empty());
}

TEST_F(PosixChildOutputTest, KeepsSixteenMebibytesAndDropsTheRest) {
  const auto process = start(shell("head -c 20000000 /dev/zero; echo end"));
  const Bytes output = process->readOutputToEnd();
  EXPECT_EQ(process->waitUntilExit(), 0);
  EXPECT_EQ(output.size(), std::size_t{16} * 1024 * 1024);
  EXPECT_EQ(output.back(), 0);
}

TEST_F(PosixChildOutputTest, DroppingTheHandleClosesItsPipe) {
  auto writer = start(shell("while echo more; do :; done 2>/dev/null"));
  const std::weak_ptr<ChildProcess> dropped = writer;
  writer.reset();
  EXPECT_TRUE(dropped.expired());
  // The writer now fails on the broken pipe: once it is reaped no child is left.
  siginfo_t info{};
  while (::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT) == 0) std::this_thread::yield();
  EXPECT_EQ(errno, ECHILD);
}

TEST(OutputPipeTest, TakesOnlyWhatIsThereOnceTheChildHasExited) {
  auto output = makePipe();
  auto exited = makePipe();
  ASSERT_TRUE(output && exited);
  ASSERT_EQ(::write(output->writeEnd.get(), "abc", 3), 3);
  exited->writeEnd.reset();
  // The writing end stays open and the reading end blocks: one more read would never return.
  EXPECT_EQ(asText(readUntilEndOrExit(std::move(output->readEnd), std::move(exited->readEnd))),
            "abc");
}

}  // namespace
}  // namespace torvane
