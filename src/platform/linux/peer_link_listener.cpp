#include "platform/linux/peer_link_listener.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "peer/peer_origin.h"

namespace torvane {
namespace {

using Error = boost::system::error_code;

// Out of descriptors or memory: a connection that waits would wake the loop again at once.
constexpr std::chrono::milliseconds kPause{200};
constexpr int kMostPerTurn = 16;

bool setOption(int socket, int level, int option, int value) {
  return ::setsockopt(socket, level, option, &value, sizeof value) == 0;
}

bool bindTo(int socket, std::uint16_t port, bool isIpv6) {
  sockaddr_storage storage{};
  socklen_t size = sizeof(sockaddr_in);
  if (isIpv6) {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    size = sizeof address;
    std::memcpy(&storage, &address, size);
  } else {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    std::memcpy(&storage, &address, size);
  }
  return ::bind(socket, reinterpret_cast<const sockaddr*>(&storage), size) == 0;
}

NetworkAddress networkAddress(const sockaddr_storage& storage) {
  NetworkAddress result{};
  if (storage.ss_family == AF_INET6) {
    sockaddr_in6 address{};
    std::memcpy(&address, &storage, sizeof address);
    std::memcpy(result.data(), &address.sin6_addr, result.size());
    return result;
  }
  sockaddr_in address{};
  std::memcpy(&address, &storage, sizeof address);
  result[10] = result[11] = 0xFF;
  std::memcpy(&result[12], &address.sin_addr, sizeof address.sin_addr);
  return result;
}

}  // namespace

bool PeerLinkListener::open(std::uint16_t preferredPort) {
  for (const bool isIpv6 : {true, false}) {
    if (listen(preferredPort, isIpv6) || (preferredPort != 0 && listen(0, isIpv6))) {
      waitForConnection();
      return true;
    }
  }
  return false;
}

bool PeerLinkListener::listen(std::uint16_t port, bool isIpv6) {
  const int family = isIpv6 ? AF_INET6 : AF_INET;
  const int socket = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP);
  if (socket < 0) return false;
  Error error;
  if (!setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1) ||
      (isIpv6 && !setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0)) ||
      !bindTo(socket, port, isIpv6) || ::listen(socket, SOMAXCONN) != 0 ||
      acceptor_.assign(isIpv6 ? boost::asio::ip::tcp::v6() : boost::asio::ip::tcp::v4(), socket,
                       error)) {
    ::close(socket);
    return false;
  }
  isIpv6_ = isIpv6;
  port_ = acceptor_.local_endpoint(error).port();
  return true;
}

void PeerLinkListener::close() {
  Error ignored;
  acceptor_.close(ignored);
  pause_.cancel();
}

void PeerLinkListener::waitForConnection() {
  acceptor_.async_wait(boost::asio::socket_base::wait_read, [this](Error error) {
    if (!error && acceptor_.is_open()) acceptAll();
  });
}

void PeerLinkListener::acceptAll() {
  for (int i = 0; i < kMostPerTurn && acceptor_.is_open(); ++i) {
    sockaddr_storage from{};
    socklen_t size = sizeof from;
    const int socket = ::accept4(acceptor_.native_handle(), reinterpret_cast<sockaddr*>(&from),
                                 &size, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket >= 0) {
      didAccept_({socket, isIpv6_, peerOrigin(networkAddress(from))});
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      break;
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      return pause();
    }
  }
  if (acceptor_.is_open()) waitForConnection();
}

void PeerLinkListener::pause() {
  pause_.expires_after(kPause);
  pause_.async_wait([this](Error error) {
    if (!error && acceptor_.is_open()) acceptAll();
  });
}

}  // namespace torvane
