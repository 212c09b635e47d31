#include "platform/linux/avahi_publisher.h"

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/simple-watch.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "platform/linux/private_file.h"
#include "support/event_queue.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

using std::chrono::milliseconds;
using testing::EventQueue;
using LinkTestClock = std::chrono::steady_clock;

constexpr const char* kDaemon = "/usr/sbin/avahi-daemon";
constexpr const char* kBusDaemon = "/usr/bin/dbus-daemon";
constexpr const char* kNone = "none any more";
constexpr const char* kNotRunning =
    "Other devices cannot find this computer: the Avahi service is not running.";

// A program of the test's own, ended with it.
class Child {
 public:
  explicit Child(std::vector<std::string> arguments) {
    std::vector<char*> raw;
    for (auto& argument : arguments) raw.push_back(argument.data());
    raw.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ != 0) return;
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(null, 1);
    ::dup2(null, 2);
    ::execv(raw[0], raw.data());
    ::_exit(127);
  }
  ~Child() {
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

 private:
  pid_t pid_;
};

// The names under which other programs find a service, each with its port.
class Browser {
 public:
  Browser() : poll_(avahi_simple_poll_new()) {
    int error = 0;
    client_ = avahi_client_new(
        avahi_simple_poll_get(poll_), AVAHI_CLIENT_NO_FAIL, [](auto...) {}, nullptr, &error);
  }
  ~Browser() {
    if (client_ != nullptr) avahi_client_free(client_);
    avahi_simple_poll_free(poll_);
  }
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  bool waitFor(const std::map<std::string, std::uint16_t>& expected) {
    const auto deadline = LinkTestClock::now() + std::chrono::seconds(30);
    while (found_ != expected && LinkTestClock::now() < deadline) {
      const bool isThere =
          client_ != nullptr && avahi_client_get_state(client_) == AVAHI_CLIENT_S_RUNNING;
      if (isThere && browser_ == nullptr) {
        browser_ =
            avahi_service_browser_new(client_, AVAHI_IF_UNSPEC, AVAHI_PROTO_INET, "_torvane._tcp",
                                      nullptr, AvahiLookupFlags{}, didFind, this);
      }
      if (avahi_simple_poll_iterate(poll_, 200) != 0) break;
    }
    return found_ == expected;
  }

 private:
  static void didFind(AvahiServiceBrowser*, AvahiIfIndex interface, AvahiProtocol protocol,
                      AvahiBrowserEvent event, const char* name, const char* type,
                      const char* domain, AvahiLookupResultFlags, void* self) {
    auto& browser = *static_cast<Browser*>(self);
    if (event == AVAHI_BROWSER_REMOVE) browser.found_.erase(name);
    if (event != AVAHI_BROWSER_NEW) return;
    avahi_service_resolver_new(browser.client_, interface, protocol, name, type, domain,
                               AVAHI_PROTO_INET, AvahiLookupFlags{}, didResolve, self);
  }

  static void didResolve(AvahiServiceResolver* resolver, AvahiIfIndex, AvahiProtocol,
                         AvahiResolverEvent event, const char* name, const char*, const char*,
                         const char*, const AvahiAddress*, std::uint16_t port,
                         AvahiStringList* text, AvahiLookupResultFlags, void* self) {
    if (event == AVAHI_RESOLVER_FOUND) {
      EXPECT_EQ(text, nullptr);
      static_cast<Browser*>(self)->found_[name] = port;
    }
    avahi_service_resolver_free(resolver);
  }

  AvahiSimplePoll* poll_;
  AvahiClient* client_ = nullptr;
  AvahiServiceBrowser* browser_ = nullptr;  // the client's
  std::map<std::string, std::uint16_t> found_;
};

// A message bus of the test's own, and a daemon on it where that can be had: it keeps its process
// id at one fixed place, so a daemon of the system's must not be running.
class AvahiPublishing : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    // The bus library reads the address once.
    folder = new TemporaryFolder;
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder->path() + "/bus").c_str(), 1);
  }
  static void TearDownTestSuite() {
    delete folder;
    ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
  }

  void SetUp() override {
    if (::access(kBusDaemon, X_OK) != 0) GTEST_SKIP() << "there is no dbus-daemon here";
  }

  void startBus() {
    const std::string config = folder->path() + "/bus.conf";
    std::ofstream(config) << "<busconfig><type>system</type><listen>unix:path=" << folder->path()
                          << "/bus</listen><policy context=\"default\"><allow user=\"*\"/>"
                             "<allow own=\"*\"/><allow send_type=\"*\" send_destination=\"*\"/>"
                             "<allow receive_type=\"*\"/></policy></busconfig>";
    std::filesystem::remove(folder->path() + "/bus");
    bus = std::make_unique<Child>(
        std::vector<std::string>{kBusDaemon, "--config-file=" + config, "--nofork", "--nopidfile"});
    const auto deadline = LinkTestClock::now() + std::chrono::seconds(20);
    while (!busAnswers() && LinkTestClock::now() < deadline) ::usleep(1000);
  }

  // The socket is there before the bus listens on it.
  static bool busAnswers() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder->path() + "/bus").copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answers =
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return answers;
  }

  // Holds off other runs of these tests on this computer.
  bool canStartDaemon() {
    lock.emplace((std::filesystem::temp_directory_path() / "torvane-avahi-test.lock").string());
    return ::geteuid() == 0 && ::access(kDaemon, X_OK) == 0 &&
           ::access("/run/avahi-daemon/pid", F_OK) != 0;
  }

  void startDaemon() {
    ::mkdir("/run/avahi-daemon", 0755);
    const std::string config = folder->path() + "/avahi.conf";
    std::ofstream(config) << "[server]\nhost-name=torvane-test\nallow-interfaces=lo\n"
                             "use-ipv6=no\n[wide-area]\nenable-wide-area=no\n";
    daemon = std::make_unique<Child>(std::vector<std::string>{
        kDaemon, "-f", config, "--no-drop-root", "--no-chroot", "--no-rlimits"});
  }

  AvahiPublisher::Service service(const std::string& name, std::uint16_t port = 48484) {
    return {name, "_torvane._tcp", port};
  }
  AvahiPublisher::Report keepError() {
    return [this](std::optional<std::string> problem) { errors.put(problem.value_or(kNone)); };
  }

  static inline TemporaryFolder* folder = nullptr;
  std::optional<FileLock> lock;
  EventQueue<std::string> errors;
  std::unique_ptr<Child> bus;
  std::unique_ptr<Child> daemon;
};

TEST_F(AvahiPublishing, SaysSoWithoutABus) {
  const AvahiPublisher publisher(service("Desk"), keepError());
  EXPECT_EQ(errors.next(), kNotRunning);
}

TEST_F(AvahiPublishing, SaysSoOnceWithoutADaemon) {
  startBus();
  {
    const AvahiPublisher publisher(service("Desk"), keepError());
    EXPECT_EQ(errors.next(), kNotRunning);
    bus.reset();
    startBus();
  }
  EXPECT_TRUE(errors.empty());
}

TEST_F(AvahiPublishing, IsFoundUnderItsNameUntilItEnds) {
  if (!canStartDaemon()) GTEST_SKIP() << "no avahi-daemon can be started here";
  startBus();
  startDaemon();
  Browser browser;
  {
    const AvahiPublisher publisher(service("Ada’s desk & more", 4711), keepError());
    EXPECT_TRUE(browser.waitFor({{"Ada’s desk & more", 4711}}));
  }
  EXPECT_TRUE(browser.waitFor({}));
}

TEST_F(AvahiPublishing, TakesAnotherNameWhenItsOwnIsInUse) {
  if (!canStartDaemon()) GTEST_SKIP() << "no avahi-daemon can be started here";
  startBus();
  startDaemon();
  const AvahiPublisher first(service("Desk", 1001), keepError());
  Browser browser;
  ASSERT_TRUE(browser.waitFor({{"Desk", 1001}}));
  const AvahiPublisher second(service("Desk", 1002), keepError());
  EXPECT_TRUE(browser.waitFor({{"Desk", 1001}, {"Desk #2", 1002}}));
}

TEST_F(AvahiPublishing, ComesUpWithADaemonThatStartsLaterAndAgainAfterItsRestart) {
  if (!canStartDaemon()) GTEST_SKIP() << "no avahi-daemon can be started here";
  startBus();
  const AvahiPublisher publisher(service("Desk"), keepError());
  EXPECT_EQ(errors.next(), kNotRunning);
  startDaemon();
  EXPECT_TRUE(Browser().waitFor({{"Desk", 48484}}));
  EXPECT_EQ(errors.next(), kNone);
  daemon.reset();
  EXPECT_EQ(errors.next(), kNotRunning);
  startDaemon();
  EXPECT_TRUE(Browser().waitFor({{"Desk", 48484}}));
  EXPECT_EQ(errors.next(), kNone);
  EXPECT_TRUE(errors.empty());
}

TEST_F(AvahiPublishing, ComesBackAfterTheWholeBusWasGone) {
  if (!canStartDaemon()) GTEST_SKIP() << "no avahi-daemon can be started here";
  const AvahiPublisher publisher(service("Desk"), keepError());
  EXPECT_EQ(errors.next(), kNotRunning);
  startBus();
  startDaemon();
  EXPECT_TRUE(Browser().waitFor({{"Desk", 48484}}));
  EXPECT_EQ(errors.next(), kNone);
  daemon.reset();
  bus.reset();
  EXPECT_EQ(errors.next(), kNotRunning);
  startBus();
  startDaemon();
  EXPECT_TRUE(Browser().waitFor({{"Desk", 48484}}));
  EXPECT_EQ(errors.next(), kNone);
}

TEST_F(AvahiPublishing, CutsANameThatIsTooLong) {
  if (!canStartDaemon()) GTEST_SKIP() << "no avahi-daemon can be started here";
  startBus();
  startDaemon();
  const AvahiPublisher publisher(service(std::string(62, 'x') + "é"), keepError());
  EXPECT_TRUE(Browser().waitFor({{std::string(62, 'x'), 48484}}));
}

}  // namespace
}  // namespace torvane
