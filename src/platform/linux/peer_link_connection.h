#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/peer_link_http.h"
#include "platform/linux/peer_link_limits.h"
#include "platform/linux/peer_link_session.h"

namespace torvane {

// What the peer may send next.
enum class LinkPhase {
  invitation,  // one text message
  nothing,
  frames,  // binary messages
};

// RFC 6455, section 7.4.1.
enum class LinkCloseCode : std::uint16_t { goingAway = 1001, protocolError = 1002, policy = 1008 };

// Hears of its connections; all on the link's thread.
class PeerConnectionOwner {
 public:
  virtual ~PeerConnectionOwner() = default;

  virtual void connectionDidOpen(std::uint64_t token, LinkVersion version) = 0;
  virtual void connectionDidSendText(std::uint64_t token, std::string_view text) = 0;
  virtual void connectionDidSendFrame(std::uint64_t token, Bytes frame, MessageLease lease) = 0;

  // The peer has said that it goes; the connection ends soon.
  virtual void connectionIsLeaving(std::uint64_t token) = 0;

  // A message that its phase does not allow.
  virtual void connectionDidBreakRules(std::uint64_t token) = 0;

  // Called once, last.
  virtual void connectionDidEnd(std::uint64_t token) = 0;
};

// One TCP connection: TLS, the HTTP request, the WebSocket and its timing. Used on the link's
// thread only, which all of it runs on.
class PeerConnection {
 public:
  virtual ~PeerConnection() = default;

  virtual void start() = 0;
  virtual void setPhase(LinkPhase phase) = 0;

  // Sends what its outbox holds.
  virtual void flush() = 0;
  [[nodiscard]] virtual const std::shared_ptr<PeerOutbox>& outbox() const = 0;

  // Reads on where it waited for the budget and may now.
  virtual void resume() = 0;
  virtual void tick(LinkTime now) = 0;

  // Sends what is queued, then closes; nothing is received any more.
  virtual void close(LinkCloseCode code) = 0;
  virtual void drop() = 0;
};

struct LinkTls;  // peer_link_tls.h

struct PeerConnectionSetup {
  boost::asio::io_context& loop;
  std::shared_ptr<LinkTls> tls;
  PeerConnectionOwner& owner;
  const std::shared_ptr<ReceiveBudget>& budget;
  const PeerLinkTimes& times;
  const PeerLinkCaps& caps;
};

// Takes over the socket, which is non-blocking. None when that fails; the socket is closed then.
[[nodiscard]] std::shared_ptr<PeerConnection> makePeerConnection(const PeerConnectionSetup& setup,
                                                                 std::uint64_t token, int socket,
                                                                 bool isIpv6);

}  // namespace torvane
