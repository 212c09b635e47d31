// The life of a child: how it starts, ends and is reported.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <future>
#include <thread>
#include <vector>

#include "engine/run_tool.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix_child_process_fixture.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

int countDescriptors() {
  int count = 0;
  DIR* folder = ::opendir("/proc/self/fd");
  while (::readdir(folder) != nullptr) ++count;
  ::closedir(folder);
  return count;
}

// Also a zombie counts.
bool hasChildren() {
  siginfo_t info{};
  return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

TEST_F(PosixChildProcessTest, ReportsTheExitCode) {
  EXPECT_EQ(start(shell("exit 0"))->waitUntilExit(), 0);
  EXPECT_EQ(start(shell("exit 7"))->waitUntilExit(), 7);
  EXPECT_EQ(start(shell("exit 255"))->waitUntilExit(), 255);
}

TEST_F(PosixChildProcessTest, ReportsTheSignalNumber) {
  EXPECT_EQ(start(shell("kill -KILL $$"))->waitUntilExit(), SIGKILL);
  EXPECT_EQ(start(shell("kill -SEGV $$"))->waitUntilExit(), SIGSEGV);
}

TEST_F(PosixChildProcessTest, CanBeEndedWhateverItDoes) {
  const TemporaryFolder folder;
  const std::string ready = folder / "ready";
  ASSERT_EQ(::mkfifo(ready.c_str(), 0600), 0);
  const auto process = start(shell("trap '' TERM; : >'" + ready + "'; while :; do sleep 1; done"));
  const UniqueFd opened(::open(ready.c_str(), O_RDONLY | O_CLOEXEC));  // waits for the child
  process->terminate();
  EXPECT_TRUE(process->isRunning());
  process->kill();
  EXPECT_EQ(process->waitUntilExit(), SIGKILL);
  process->kill();  // there is nothing to end any more
  EXPECT_EQ(process->waitUntilExit(), SIGKILL);
}

TEST_F(PosixChildProcessTest, DescribesALaunchError) {
  ProcessLaunch launch;
  launch.executable = "/nonexistent/tool";
  bool called = false;
  const LaunchResult missing = launcher.launch(launch, [&](auto&&, int) { called = true; });
  EXPECT_EQ(missing.process, nullptr);
  EXPECT_EQ(missing.error, "No such file or directory: /nonexistent/tool");
  launch.executable = "/etc/passwd";
  EXPECT_EQ(launcher.launch(launch, nullptr).error, "Permission denied: /etc/passwd");
  EXPECT_FALSE(called);
  EXPECT_FALSE(hasChildren());
}

TEST_F(PosixChildProcessTest, ToolThatDoesNotExistGivesMinusOneAtOnce) {
  const ToolResult missing = runTool(launcher, "/nonexistent/tool", {});
  EXPECT_EQ(missing.status, -1);
  EXPECT_EQ(missing.output, "No such file or directory: /nonexistent/tool");
  EXPECT_FALSE(hasChildren());
}

TEST_F(PosixChildProcessTest, RefusesAZeroByteInAnyString) {
  ProcessLaunch launch = shell("true");
  launch.arguments.push_back(std::string("a\0b", 3));
  EXPECT_EQ(launcher.launch(launch, nullptr).process, nullptr);
  launch = shell("true");
  launch.environment = Environment{{"A", std::string("a\0b", 3)}};
  EXPECT_EQ(launcher.launch(launch, nullptr).process, nullptr);
}

TEST_F(PosixChildProcessTest, NoOtherDescriptorReachesTheChild) {
  const UniqueFd inheritable(::fcntl(STDERR_FILENO, F_DUPFD, 100));
  const UniqueFd alsoInheritable(::open("/dev/null", O_RDONLY));
  ASSERT_TRUE(inheritable && alsoInheritable);
  const std::string script =
      "n=0; while [ $n -lt 200 ]; do [ -e /proc/self/fd/$n ] && echo $n; n=$((n+1)); done";
  EXPECT_EQ(outputOf(shell(script)), "0\n1\n2\n");
}

TEST_F(PosixChildProcessTest, TheChildStartsWithDefaultSignals) {
  const auto previous = ::signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  EXPECT_EQ(start(shell("kill -PIPE $$; exit 1"))->waitUntilExit(), SIGPIPE);
  EXPECT_EQ(start(shell("kill -TERM $$; exit 1"))->waitUntilExit(), SIGTERM);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ::signal(SIGPIPE, previous);
}

TEST_F(PosixChildProcessTest, TerminatesPolitely) {
  TemporaryFolder folder;
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const auto process = start(
      shell("trap 'kill -9 $!; echo bye; exit 5' TERM; sleep 600 & echo >" + fifo + "; wait"));
  const UniqueFd ready(::open(fifo.c_str(), O_RDONLY));  // waits until the child opens it
  EXPECT_TRUE(process->isRunning());
  process->terminate();
  EXPECT_EQ(asText(process->readOutputToEnd()), "bye\n");
  EXPECT_EQ(process->waitUntilExit(), 5);
  EXPECT_FALSE(process->isRunning());
}

TEST_F(PosixChildProcessTest, TerminatingAnExitedChildDoesNothing) {
  const auto process = start(shell("exit 3"));
  EXPECT_EQ(process->waitUntilExit(), 3);
  process->terminate();
  EXPECT_FALSE(process->isRunning());
  EXPECT_EQ(process->waitUntilExit(), 3);
}

TEST_F(PosixChildProcessTest, CallsTheHandlerOnceOnAnotherThread) {
  struct Call {
    std::shared_ptr<ChildProcess> process;
    int status;
    std::thread::id thread;
  };
  std::promise<Call> called;  // a second call would throw
  const auto process = start(shell("exit 9"), [&](const auto& exited, int status) {
    called.set_value({exited, status, std::this_thread::get_id()});
  });
  const Call call = called.get_future().get();
  EXPECT_EQ(call.process, process);
  EXPECT_EQ(call.status, 9);
  EXPECT_NE(call.thread, std::this_thread::get_id());
  EXPECT_FALSE(process->isRunning());
}

TEST_F(PosixChildProcessTest, ADroppedChildIsReapedAndStillReported) {
  std::promise<int> called;
  (void)start(shell("exit 6"), [&](auto&&, int status) { called.set_value(status); });
  EXPECT_EQ(called.get_future().get(), 6);
  EXPECT_FALSE(hasChildren());
}

TEST_F(PosixChildProcessTest, TwoHundredChildrenLeaveNothingBehind) {
  const int before = countDescriptors();
  std::vector<std::future<int>> statuses;
  for (int i = 0; i < 200; ++i) {
    auto exited = std::make_shared<std::promise<int>>();
    statuses.push_back(exited->get_future());
    const auto output = i % 2 == 0 ? ProcessOutput::pipe : ProcessOutput::nullDevice;
    (void)start(shell("exit " + std::to_string(i), output),
                [exited](auto&&, int status) { exited->set_value(status); });
  }
  for (int i = 0; i < 200; ++i) EXPECT_EQ(statuses[static_cast<std::size_t>(i)].get(), i);
  EXPECT_FALSE(hasChildren());
  // A pipe is closed by the last of its threads, perhaps a moment after its handler returned.
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (countDescriptors() > before && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_LE(countDescriptors(), before);
}

TEST_F(PosixChildProcessTest, NoHandlerRunsAfterTheLauncherIsGone) {
  std::shared_ptr<ChildProcess> process;
  bool called = false;
  {
    PosixProcessLauncher shortLived;
    process =
        shortLived.launch(shell("exec sleep 600"), [&](auto&&, int) { called = true; }).process;
  }
  process->terminate();
  EXPECT_EQ(process->waitUntilExit(), SIGTERM);
  // The waiting thread lets go of the process when it has passed the handler by.
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (process.use_count() > 1 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_EQ(process.use_count(), 1);
  EXPECT_FALSE(called);
}

TEST_F(PosixChildProcessTest, AHandlerMayLaunchTheNextChild) {
  std::promise<int> second;
  const auto process = start(shell("exit 1"), [&](auto&&, int) {
    (void)launcher.launch(shell("exit 2"), [&](auto&&, int status) { second.set_value(status); });
  });
  EXPECT_EQ(second.get_future().get(), 2);
}

TEST_F(PosixChildProcessTest, ManyThreadsMayLaunchAtOnce) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int i = 0; i < 10; ++i) {
        const std::string word = std::to_string(thread) + "-" + std::to_string(i);
        EXPECT_EQ(outputOf(shell("echo " + word)), word + "\n");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(hasChildren());
}

}  // namespace
}  // namespace torvane
