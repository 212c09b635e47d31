#include "engines.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <chrono>

#include "platform/linux/linux_process_info.h"
#include "platform/posix/posix_child_process.h"
#include "protocol/constants.h"

namespace torvane::bench {
namespace {

constexpr std::string_view kHeaderEnd = "\r\n\r\n";
constexpr std::string_view kState =
    R"({"version":"1.0","deck":"Torvane sample deck","slide":1,"count":5,)"
    R"("title":"Welcome to Torvane","presenting":false,"aspect":0.5625,"strokes":0,"inkSeq":0,)"
    R"("overlayV":0})";

sockaddr_in engineAddress() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(PORT);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

UniqueFd newSocket() {
  UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int on = 1;
  ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return socket;
}

UniqueFd listenOnEnginePort() {
  UniqueFd socket = newSocket();
  const int on = 1;
  ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in address = engineAddress();
  if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(socket.get(), SOMAXCONN) != 0) {
    return {};
  }
  return socket;
}

// Appends what there is to read; false at the end of the connection.
bool receive(int socket, std::string& to) {
  std::array<char, 4096> part;
  const ssize_t size = ::recv(socket, part.data(), part.size(), 0);
  if (size <= 0) return false;
  to.append(part.data(), static_cast<std::size_t>(size));
  return true;
}

bool sendAll(int socket, std::string_view text) {
  return ::send(socket, text.data(), text.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(text.size());
}

std::size_t contentLength(std::string_view header) {
  constexpr std::string_view kName = "Content-Length: ";
  const auto at = header.find(kName);
  std::size_t length = 0;
  if (at == std::string_view::npos) return length;
  const std::string_view digits = header.substr(at + kName.size());
  std::from_chars(digits.data(), digits.data() + digits.size(), length);
  return length;
}

std::string_view targetOf(std::string_view request) {
  const auto from = request.find(' ') + 1;
  return request.substr(from, request.find(' ', from) - from);
}

class PythonEngine final : public Engine {
 public:
  explicit PythonEngine(const std::string& script) {
    ProcessLaunch launch;
    launch.executable = "/usr/bin/python3";
    launch.arguments = {script, std::to_string(PORT)};
    launch.environment = LinuxProcessInfo().environment();
    (*launch.environment)["TORVANE_PARENT_PID"] = std::to_string(::getpid());
    process_ = launcher_.launch(launch, {}).process;
  }
  ~PythonEngine() override {
    if (!process_) return;
    process_->terminate();
    process_->waitUntilExit();
  }
  PythonEngine(const PythonEngine&) = delete;
  PythonEngine& operator=(const PythonEngine&) = delete;

  [[nodiscard]] bool isRunning() const { return process_ && process_->isRunning(); }

 private:
  PosixProcessLauncher launcher_;
  std::shared_ptr<ChildProcess> process_;
};

}  // namespace

bool isEnginePortFree() {
  return listenOnEnginePort().get() >= 0;
}

std::unique_ptr<Engine> startPythonEngine(const std::string& script) {
  auto engine = std::make_unique<PythonEngine>(script);
  RawHttp probe;
  for (int tenths = 0; tenths < 200 && engine->isRunning(); ++tenths) {
    if (probe.connect() && probe.get("/api/state")) return engine;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return nullptr;
}

std::unique_ptr<Engine> FastEngine::start() {
  return start([](std::string_view) { return std::string(kState); });
}

std::unique_ptr<Engine> FastEngine::start(Bodies bodies) {
  UniqueFd listener = listenOnEnginePort();
  if (listener.get() < 0) return nullptr;
  return std::make_unique<FastEngine>(std::move(listener), std::move(bodies));
}

FastEngine::FastEngine(UniqueFd listener, Bodies bodies)
    : listener_(std::move(listener)),
      ending_(::eventfd(0, EFD_CLOEXEC)),
      bodies_(std::move(bodies)) {
  thread_ = std::thread([this] { run(); });
}

FastEngine::~FastEngine() {
  ::eventfd_write(ending_.get(), 1);
  thread_.join();
}

void FastEngine::run() {
  std::vector<pollfd> watched;
  for (;;) {
    watched = {{ending_.get(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
    for (const auto& each : connections_) watched.push_back({each.socket.get(), POLLIN, 0});
    ::poll(watched.data(), watched.size(), -1);
    if (watched[0].revents != 0) return;
    for (std::size_t i = watched.size(); i-- > 2;) {
      if (watched[i].revents == 0 || answer(connections_[i - 2])) continue;
      connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(i - 2));
    }
    if (watched[1].revents != 0) accept();
  }
}

void FastEngine::accept() {
  UniqueFd socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (socket.get() < 0) return;
  const int on = 1;
  ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  connections_.push_back({std::move(socket), {}});
}

bool FastEngine::answer(Connection& connection) const {
  if (!receive(connection.socket.get(), connection.unread)) return false;
  for (;;) {
    const auto end = connection.unread.find(kHeaderEnd);
    if (end == std::string::npos) return true;
    const std::string body = bodies_(targetOf(connection.unread));
    connection.unread.erase(0, end + kHeaderEnd.size());
    const std::string header =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
        std::to_string(body.size()) + std::string(kHeaderEnd);
    if (!sendAll(connection.socket.get(), header + body)) return false;
  }
}

bool RawHttp::connect() {
  socket_ = newSocket();
  const sockaddr_in address = engineAddress();
  return ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool RawHttp::get(const std::string& path) {
  const std::string request =
      "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(PORT) + "\r\n\r\n";
  received_.clear();
  if (!sendAll(socket_.get(), request)) return false;
  for (;;) {
    if (!receive(socket_.get(), received_)) return false;
    const auto end = received_.find(kHeaderEnd);
    if (end == std::string::npos) continue;
    const std::size_t whole = end + kHeaderEnd.size() + contentLength(received_);
    if (received_.size() >= whole) return received_.starts_with("HTTP/1.1 200 ");
  }
}

}  // namespace torvane::bench
