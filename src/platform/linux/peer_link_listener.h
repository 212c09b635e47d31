#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string>

namespace torvane {

// The listening socket: IPv4 and IPv6 in one, or IPv4 alone where there is no IPv6. Every socket
// is closed on exec from its first moment. Used on the link's thread.
class PeerLinkListener {
 public:
  struct Accepted {
    int socket;  // non-blocking; the receiver's to close
    bool isIpv6;
    std::string origin;  // see peer_origin.h
  };
  using DidAccept = std::function<void(const Accepted&)>;

  PeerLinkListener(boost::asio::io_context& loop, DidAccept didAccept)
      : acceptor_(loop), pause_(loop), didAccept_(std::move(didAccept)) {}

  // Takes any free port when the preferred one is busy. False when there is none.
  [[nodiscard]] bool open(std::uint16_t preferredPort);
  void close();
  [[nodiscard]] std::uint16_t port() const { return port_; }

 private:
  bool listen(std::uint16_t port, bool isIpv6);
  void waitForConnection();
  void acceptAll();
  void pause();

  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer pause_;
  DidAccept didAccept_;
  std::uint16_t port_ = 0;
  bool isIpv6_ = false;
};

}  // namespace torvane
