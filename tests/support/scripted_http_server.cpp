#include "support/scripted_http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace torvane {
namespace {

// The length that a request's head announces.
std::size_t bodyLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t found = head.find(kName);
  if (found == std::string_view::npos) return 0;
  return std::strtoul(std::string(head.substr(found + kName.size())).c_str(), nullptr, 10);
}

}  // namespace

bool ScriptedHttpServer::Connection::receiveMore() {
  std::array<char, 65536> chunk{};
  const ssize_t count = ::recv(socket_, chunk.data(), chunk.size(), 0);
  if (count <= 0) return false;
  received_.append(chunk.data(), static_cast<std::size_t>(count));
  return true;
}

std::optional<std::string> ScriptedHttpServer::Connection::readRequest() {
  std::size_t headEnd = std::string::npos;
  while ((headEnd = received_.find("\r\n\r\n")) == std::string::npos) {
    if (!receiveMore()) return std::nullopt;
  }
  const std::size_t length = headEnd + 4 + bodyLength(received_.substr(0, headEnd + 2));
  while (received_.size() < length) {
    if (!receiveMore()) return std::nullopt;
  }
  std::string request = received_.substr(0, length);
  received_.erase(0, length);
  const std::lock_guard lock(server_.mutex_);
  server_.requests_.push_back(request);
  return request;
}

void ScriptedHttpServer::Connection::readSlowly(std::size_t bytes, std::size_t piece,
                                                std::chrono::milliseconds pause) {
  const int small = 65536;  // else most of it would wait in the kernel's buffers
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
  for (std::size_t read = 0; read < bytes;) {
    std::this_thread::sleep_for(pause);
    const std::size_t until = std::min(bytes, read + piece);
    for (; read < until; received_.clear()) {
      if (!receiveMore()) return;
      read += received_.size();
    }
  }
}

bool ScriptedHttpServer::Connection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void ScriptedHttpServer::Connection::close() {
  ::shutdown(socket_, SHUT_RDWR);
}

bool ScriptedHttpServer::Connection::staysQuietFor(std::chrono::milliseconds time) {
  pollfd polled{socket_, POLLIN, 0};
  return ::poll(&polled, 1, static_cast<int>(time.count())) == 0;
}

void ScriptedHttpServer::Connection::waitForClose() {
  while (receiveMore()) {
  }
}

ScriptedHttpServer::ScriptedHttpServer(Script script) : script_(std::move(script)) {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 128) != 0 ||
      ::getsockname(listener_, generic, &size) != 0) {
    std::abort();  // nothing can be tested
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

ScriptedHttpServer::~ScriptedHttpServer() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
  }
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (std::thread& thread : threads_) thread.join();
  for (const int socket : sockets_) ::close(socket);
  ::close(listener_);
}

void ScriptedHttpServer::accept() {
  while (true) {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const std::lock_guard lock(mutex_);
    sockets_.push_back(socket);
    if (ending_) return;
    threads_.emplace_back([this, socket, number = connections_++] { serve(socket, number); });
  }
}

void ScriptedHttpServer::serve(int socket, int number) {
  Connection connection(*this, socket, number);
  script_(connection);
  connection.close();
}

ScriptedHttpServer::Script ScriptedHttpServer::answering(std::string response) {
  return [response = std::move(response)](Connection& connection) {
    while (connection.readRequest()) connection.send(response);
  };
}

std::string ScriptedHttpServer::url(std::string_view path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
}

std::vector<std::string> ScriptedHttpServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::string httpAnswer(std::string_view body, std::string_view headers, std::string_view status) {
  std::string answer = "HTTP/1.1 " + std::string(status) + "\r\n" + std::string(headers);
  answer += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
  return answer + std::string(body);
}

}  // namespace torvane
