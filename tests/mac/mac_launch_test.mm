// What the program starts, asks for and puts right when it is launched, and ends when it quits.

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "mac/mac_program.h"

namespace torvane {
namespace {

constexpr int kPatience = 30000;  // ms, for a real child process

class MacLaunch : public MacProgram {
 protected:
  MacLaunch() {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_ + "/home");
    system().home = folder_ + "/home";
    system().readableFiles = {system().home + "/Library/Application Support/com.apple.TCC/TCC.db"};
  }
  ~MacLaunch() override {
    if (pipe_ >= 0) ::close(pipe_);
    std::filesystem::remove_all(folder_);
  }

  // An engine that tells its numbers through a pipe, and holds the pipe until it ends.
  void bundleAnEngine() {
    const std::string path = folder_ + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    pipe_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::ofstream(folder_ + "/torvane.py")
        << "import os, signal, sys\n"
           "print('a word of the engine', flush=True)\n"
           "pipe = open('"
        << path
        << "', 'w')\n"
           "pipe.write(os.environ['TORVANE_PARENT_PID'] + ' ' + sys.argv[1])\n"
           "pipe.flush()\n"
           "signal.pause()\n";
    system().resources["torvane.py"] = folder_ + "/torvane.py";
  }

  // What it says next; nothing once it has ended.
  std::string heard() const {
    pollfd waiting{pipe_, POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, kPatience), 1) << "nothing is heard of the engine";
    char text[100];
    const auto size = ::read(pipe_, text, sizeof text);
    return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : "";
  }

  std::string textOf(const std::string& path) const {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }

  std::string folder_ = testing::TempDir() + "torvane-launch-" + std::to_string(::getpid());
  int pipe_ = -1;
};

TEST_F(MacLaunch, StartsTheBundledEngineAndEndsItOnQuit) {
  bundleAnEngine();
  run([&] {
    fake::advance(1.4);
    EXPECT_EQ(timesSaid("alert Torvane P2P Helper"), 0U);
    fake::advance(0.2);
    EXPECT_EQ(heard(), "4711 8484");
    forgetLog();
    [NSApp terminate:nil];
    EXPECT_LT(placeOf("disconnect"), placeOf("POST http://127.0.0.1:8484/api/shutdown"));
    EXPECT_LT(placeOf("POST http://127.0.0.1:8484/api/shutdown"), placeOf("sleep 300 ms"));
    EXPECT_LT(placeOf("sleep 300 ms"), placeOf("ended"));
    EXPECT_EQ(heard(), "");
    const auto log = textOf(system().home + "/Library/Logs/Torvane P2P Helper/engine.log");
    EXPECT_NE(log.find("a word of the engine"), std::string::npos) << log;
  });
}

TEST_F(MacLaunch, TellsThatThereIsNoEngine) {
  run([&] {
    std::string told;
    system().onAlert = [&](const fake::Alert& alert) {
      told = alert.informativeText;
      return 1000;
    };
    fake::advance(1.6);
    EXPECT_EQ(told, "Cannot find torvane.py next to the app or in the bundle.");
  });
}

TEST_F(MacLaunch, StartsNoEngineWhereOneAnswers) {
  bundleAnEngine();
  run([&] {
    fake::respond(system().requests.back(), 200, "application/json", "{}");
    fake::advance(1.6);
    EXPECT_FALSE(std::filesystem::exists(system().home + "/Library/Logs"));
  });
}

TEST_F(MacLaunch, OffersFullDiskAccessWhereItIsMissing) {
  system().readableFiles.clear();
  run([&] {
    EXPECT_TRUE(said("defaults set fdaNudgeShown"));
    system().onAlert = [](const fake::Alert& alert) {
      return alert.message == "Stop the file-access prompts" ? 1000 : 1001;
    };
    fake::advance(2.1);
    EXPECT_LT(placeOf("to the front"), placeOf("alert Stop the file-access prompts"));
    EXPECT_EQ(timesSaid("open x-apple.systempreferences:com.apple.preference.security?"
                        "Privacy_AllFiles"),
              1U);
  });
}

TEST_F(MacLaunch, RemembersForWhichProgramItAskedAfresh) {
  system().isTrusted = false;
  system().executable = fake::string(folder_ + "/program");
  std::ofstream(folder_ + "/program") << "abc";
  run([&] {
    EXPECT_EQ(fake::text(system().defaults["tccResetForBinary"]),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_LT(placeOf("defaults set tccResetForBinary"), placeOf("trust with a prompt"));
  });
}

TEST_F(MacLaunch, KeepsEveryDelegateWhileItRuns) {
  run([&] {
    fake::settle();
    EXPECT_NE(((NSApplication*)NSApp).delegate, nil);
    EXPECT_NE(system().statusItem.menu.delegate, nil);
    EXPECT_NE(system().sessions[0].delegate, nil);
    EXPECT_NE(system().advertiser.delegate, nil);
  });
}

}  // namespace
}  // namespace torvane
