#include "platform/linux/single_instance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <thread>
#include <utility>

#include "platform/linux/private_file.h"
#include "protocol/sha256.h"

namespace torvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPatience{8000};  // longer than the main thread is ever held
constexpr milliseconds kPause{50};
constexpr int kBacklog = 8;

// Whatever the folder is called, the names are short: a socket's path has room for 107 bytes.
std::string nameOf(const std::string& bundlePath) {
  constexpr std::size_t kCharacters = 16;
  Sha256 hash;
  hash.add(asBytes(bundlePath));
  return "instance-" + hash.hexadecimal().substr(0, kCharacters);
}

bool fillAddress(const std::string& path, sockaddr_un& address) {
  if (path.size() >= sizeof address.sun_path) return false;
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, path.size());
  return true;
}

UniqueFd localSocket() {
  return UniqueFd(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

// Whether the program that holds the lock has answered.
bool askToShow(const std::string& socketPath, milliseconds patience) {
  sockaddr_un address{};
  const UniqueFd socket = localSocket();
  if (!fillAddress(socketPath, address) ||
      ::connect(socket.get(), generic(address), sizeof address) != 0) {
    return false;
  }
  pollfd reply{socket.get(), POLLIN, 0};
  char answer = 0;
  return ::poll(&reply, 1, static_cast<int>(patience.count())) > 0 &&
         ::recv(socket.get(), &answer, 1, 0) == 1;
}

UniqueFd listenAt(const std::string& path) {
  sockaddr_un address{};
  UniqueFd socket = localSocket();
  ::unlink(path.c_str());  // of a process that could not tidy up
  if (!fillAddress(path, address) || ::bind(socket.get(), generic(address), sizeof address) != 0 ||
      ::listen(socket.get(), kBacklog) != 0) {
    return {};
  }
  return socket;
}

}  // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim(const std::string& runtimeFolder,
                                                      const std::string& bundlePath) {
  const std::string path = runtimeFolder + "/" + nameOf(bundlePath);
  const auto claimed = [&](UniqueFd lock) {
    return std::unique_ptr<SingleInstance>(new SingleInstance(std::move(lock), path + ".socket"));
  };
  if (runtimeFolder.empty() || !makePrivateFolder(runtimeFolder)) return claimed({});
  const auto deadline = steady_clock::now() + kPatience;
  do {
    UniqueFd lock(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock || ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0) return claimed(std::move(lock));
    if (askToShow(path + ".socket", kPatience)) return nullptr;
    std::this_thread::sleep_for(kPause);  // it is starting or ending
  } while (steady_clock::now() < deadline);
  return nullptr;
}

SingleInstance::SingleInstance(UniqueFd lock, std::string socketPath)
    : lock_(std::move(lock)), socketPath_(std::move(socketPath)) {
  if (lock_) socket_ = listenAt(socketPath_);
}

SingleInstance::~SingleInstance() {
  if (socket_) ::unlink(socketPath_.c_str());
}

void SingleInstance::onSecondLaunch(std::function<void()> onLaunch) {
  if (!socket_) return;
  onLaunch_ = std::move(onLaunch);
  notifier_ = std::make_unique<QSocketNotifier>(socket_.get(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this] { answer(); });
}

void SingleInstance::answer() {
  const UniqueFd other(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!other || ::send(other.get(), "1", 1, MSG_NOSIGNAL) != 1) return;
  onLaunch_();
}

}  // namespace torvane
