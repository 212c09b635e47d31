#include "platform/linux/proc_running_applications.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

// Real processes, started from application folders whose program is a copy of `sleep`.
class ProcRunningApplicationsTest : public testing::Test {
 protected:
  ~ProcRunningApplicationsTest() override {
    for (const int process : started_) {
      ::kill(process, SIGKILL);
      ::waitpid(process, nullptr, 0);
    }
  }

  std::string makeBundle(const std::string& name) {
    const std::string path = folder / name;
    fs::create_directories(path + "/bin");
    fs::copy_file("/bin/sleep", path + "/bin/helper");
    std::ofstream(path + "/Info.json") << R"({"CFBundleIdentifier":")" + identifier + R"("})";
    return path;
  }

  int start(const std::string& bundle, bool obeys = true, const char* session = nullptr) {
    const std::string program = bundle + "/bin/helper";
    const char* own = std::getenv("XDG_RUNTIME_DIR");
    if (session == nullptr) session = own;
    const std::string variable = "XDG_RUNTIME_DIR=" + std::string(session ? session : "");
    std::array<const char*, 2> environment = {session ? variable.c_str() : nullptr, nullptr};
    std::array<const char*, 3> arguments = {program.c_str(), "1000", nullptr};
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const int process = ::fork();
    if (process == 0) {
      if (!obeys) std::signal(SIGTERM, SIG_IGN);
      ::execve(program.c_str(), const_cast<char**>(arguments.data()),
               const_cast<char**>(environment.data()));
      std::_Exit(1);
    }
    ::close(pipe[1]);
    char end = 0;
    EXPECT_EQ(::read(pipe[0], &end, 1), 0);  // until the program itself runs
    ::close(pipe[0]);
    started_.push_back(process);
    return process;
  }

  // How a started process ended: the signal's number.
  int ended(int process) {
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, WNOHANG), process);
    started_.erase(std::remove(started_.begin(), started_.end(), process), started_.end());
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

  std::vector<RunningApplication> found() { return applications.withBundleIdentifier(identifier); }

  TemporaryFolder folder;
  const std::string identifier = "org.example.test" + std::to_string(::getpid());
  ProcRunningApplications applications;

 private:
  std::vector<int> started_;
};

TEST_F(ProcRunningApplicationsTest, FindsCopiesByTheirIdentifier) {
  EXPECT_TRUE(found().empty());
  const std::string bundle = makeBundle("Torvane P2P Helper");
  const int process = start(bundle);
  const auto running = found();
  ASSERT_EQ(running.size(), 1U);
  EXPECT_EQ(running[0].processIdentifier, process);
  EXPECT_EQ(running[0].bundlePath, bundle);
  EXPECT_TRUE(applications.withBundleIdentifier("org.example.other").empty());
}

TEST_F(ProcRunningApplicationsTest, CopyWhoseFileWasReplacedKeepsItsPlace) {
  const std::string bundle = makeBundle("helper");
  start(bundle);
  fs::remove(bundle + "/bin/helper");
  ASSERT_EQ(found().size(), 1U);
  EXPECT_EQ(found()[0].bundlePath, bundle);
}

TEST_F(ProcRunningApplicationsTest, CopiesOfOtherSessionsAreNotSeen) {
  start(makeBundle("helper"), true, "/run/user/somebody");
  EXPECT_TRUE(found().empty());
}

TEST_F(ProcRunningApplicationsTest, EndsACopyAndHasSeenItGo) {
  const int process = start(makeBundle("helper"));
  applications.forceTerminate(found().at(0));
  EXPECT_EQ(ended(process), SIGTERM);
}

TEST_F(ProcRunningApplicationsTest, EndsACopyThatWillNotGo) {
  const int process = start(makeBundle("helper"), false);
  applications.forceTerminate(found().at(0));
  EXPECT_EQ(ended(process), SIGKILL);
}

TEST_F(ProcRunningApplicationsTest, SparesAProcessThatIsAnotherProgramByNow) {
  const std::string bundle = makeBundle("helper");
  const int process = start(bundle);
  applications.forceTerminate({process, folder / "another"});
  applications.forceTerminate({process, std::nullopt});
  EXPECT_EQ(found().size(), 1U);
}

}  // namespace
}  // namespace torvane
