#include "torvane_ipad/websocket_connection.h"

#include <algorithm>
#include <boost/asio/connect.hpp>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <deque>
#include <optional>
#include <string_view>

#include "torvane_ipad/certificate_fingerprint.h"
#include "torvane_ipad/handshake.h"
#include "torvane_ipad/link_error.h"

namespace torvane::ipad {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;
using Error = boost::system::error_code;
using Tcp = asio::ip::tcp;

namespace {

constexpr std::size_t kMostFrameSize = 64 * 1024 * 1024;  // a PDF of many slides
constexpr std::size_t kReadStep = 64 * 1024;
constexpr std::size_t kMostTextSize = 64 * 1024;  // what follows is judged by its own limit
constexpr const char* kTarget = "/link";
constexpr const char* kSubprotocol = "torvane.link.2";
constexpr auto kCloseTime = std::chrono::seconds(1);

class WebSocketConnection : public PeerConnection,
                            public std::enable_shared_from_this<WebSocketConnection> {
 public:
  WebSocketConnection(asio::io_context& context, asio::ssl::context& tls,
                      ConnectionSettings settings, DeviceIdentity identity,
                      std::weak_ptr<ConnectionHandler> handler)
      : settings_(std::move(settings)),
        identity_(std::move(identity)),
        handler_(std::move(handler)),
        resolver_(context),
        deadline_(context),
        socket_(context, tls) {}

  void start() {
    deadline_.expires_after(settings_.timeout);
    deadline_.async_wait([self = shared_from_this()](Error error) {
      if (!error && self->isStarting_) {
        self->end(LinkFailure::Kind::unreachable, "it took too long");
      }
    });
    resolver_.async_resolve(
        settings_.host, std::to_string(settings_.port),
        [self = shared_from_this()](Error error, const Tcp::resolver::results_type& found) {
          if (self->goesOn(error, LinkFailure::Kind::unreachable)) self->connect(found);
        });
  }

  void send(Bytes frame) override {
    asio::dispatch(socket_.get_executor(),
                   [self = shared_from_this(), frame = std::move(frame)]() mutable {
                     if (self->phase_ == Phase::accepted) self->write(true, std::move(frame));
                   });
  }

  void close() override {
    asio::dispatch(socket_.get_executor(), [self = shared_from_this()] { self->closeNow(); });
  }

 private:
  enum class Phase { connecting, inviting, accepted, ended };

  struct Outgoing {
    bool isBinary;
    Bytes data;
  };

  // ------------------------------------------------------------------ from TCP to WebSocket

  void connect(const Tcp::resolver::results_type& found) {
    lowest().async_connect(found, [self = shared_from_this()](Error error, const auto&) {
      if (self->goesOn(error, LinkFailure::Kind::unreachable)) self->secure();
    });
  }

  void secure() {
    Error ignored;
    lowest().socket().set_option(Tcp::no_delay(true), ignored);
    Error isNoAddress;
    asio::ip::make_address(settings_.host, isNoAddress);
    if (isNoAddress) {  // a server name must not be an address
      SSL_set_tlsext_host_name(socket_.next_layer().native_handle(), settings_.host.c_str());
    }
    socket_.next_layer().async_handshake(
        asio::ssl::stream_base::client, [self = shared_from_this()](Error error) {
          if (self->goesOn(error, LinkFailure::Kind::notAHelper) && self->isTrusted()) {
            self->upgrade();
          }
        });
  }

  bool isTrusted() {
    const auto digest = peerFingerprint(socket_.next_layer().native_handle());
    if (!digest) {
      end(LinkFailure::Kind::notAHelper, "it shows no certificate");
      return false;
    }
    handshake_.emplace(identity_, settings_.displayName, *digest);
    const std::string& fingerprint = handshake_->welcome().fingerprint;
    if (!settings_.trusted || std::ranges::count(*settings_.trusted, fingerprint) > 0) return true;
    end(LinkFailure::Kind::otherHelper, fingerprint);
    return false;
  }

  void upgrade() {
    // The timer of the whole start guards the handshake as well. Without pings of our own, those
    // of the helper would be no sign of life to the library.
    socket_.set_option(websocket::stream_base::timeout{kCloseTime + settings_.timeout,
                                                       settings_.mostSilence, true});
    socket_.set_option(websocket::stream_base::decorator([](websocket::request_type& request) {
      request.set(beast::http::field::sec_websocket_protocol, kSubprotocol);
    }));
    socket_.read_message_max(0);  // which depends on the phase, see read()
    const bool needsBrackets = settings_.host.find(':') != std::string::npos;
    const std::string host = needsBrackets ? "[" + settings_.host + "]" : settings_.host;
    socket_.async_handshake(response_, host + ":" + std::to_string(settings_.port), kTarget,
                            [self = shared_from_this()](Error error) { self->upgraded(error); });
  }

  void upgraded(Error error) {
    if (response_.result() == beast::http::status::bad_request) {
      return end(LinkFailure::Kind::notAHelper,
                 "it speaks no version of the peer link with digits");
    }
    if (error == websocket::error::upgrade_declined) {
      return end(LinkFailure::Kind::notAHelper,
                 "it answered with status " + std::to_string(response_.result_int()));
    }
    if (!goesOn(error, LinkFailure::Kind::notAHelper)) return;
    if (response_[beast::http::field::sec_websocket_protocol] != kSubprotocol) {
      return end(LinkFailure::Kind::notAHelper, "it does not speak the peer link");
    }
    phase_ = Phase::inviting;
    read();
  }

  // ----------------------------------------------------------------------------- messages

  void read() {
    socket_.async_read_some(buffer_, kReadStep, [self = shared_from_this()](Error error, auto) {
      if (!self->goesOn(error, LinkFailure::Kind::lost)) return;
      if (self->buffer_.size() > self->mostMessageSize()) {
        return self->end(LinkFailure::Kind::misbehaviour, "it sent a message that is too long");
      }
      if (self->socket_.is_message_done()) {
        self->received();
        self->buffer_.consume(self->buffer_.size());
      }
      if (self->phase_ != Phase::ended) self->read();
    });
  }

  [[nodiscard]] std::size_t mostMessageSize() const {
    return phase_ == Phase::accepted ? kMostFrameSize : kMostTextSize;
  }

  void received() {
    const auto* data = static_cast<const std::uint8_t*>(buffer_.data().data());
    const ByteView message(data, buffer_.size());
    if (socket_.got_text() != (phase_ != Phase::accepted)) {
      end(LinkFailure::Kind::misbehaviour, "it sent a message of the wrong kind");
    } else if (phase_ == Phase::accepted) {
      const auto handler = handler_.lock();
      if (handler) handler->connectionReceived(Bytes(message.begin(), message.end()));
    } else {
      receivedControl(asText(message));
    }
  }

  void receivedControl(std::string_view text) {
    const auto step = handshake_->received(text);
    if (const auto* invite = std::get_if<Handshake::Send>(&step)) {
      return write(false, toBytes(invite->text));
    }
    if (const auto* failure = std::get_if<LinkFailure>(&step)) {
      return end(failure->kind, failure->detail);
    }
    isStarting_ = false;
    deadline_.cancel();
    const bool isWaiting = std::holds_alternative<Handshake::Wait>(step);
    if (!isWaiting) phase_ = Phase::accepted;
    const auto handler = handler_.lock();
    if (handler && isWaiting) handler->connectionWaits(handshake_->welcome());
    if (handler && !isWaiting) handler->connectionAccepted(handshake_->welcome());
  }

  void write(bool isBinary, Bytes data) {
    unsent_.push_back({isBinary, std::move(data)});
    if (unsent_.size() == 1) writeNext();
  }

  void writeNext() {
    socket_.binary(unsent_.front().isBinary);
    socket_.async_write(asio::buffer(unsent_.front().data),
                        [self = shared_from_this()](Error error, std::size_t) {
                          if (!self->goesOn(error, LinkFailure::Kind::lost)) return;
                          self->unsent_.pop_front();
                          if (!self->unsent_.empty()) self->writeNext();
                        });
  }

  // ----------------------------------------------------------------------------- the end

  // False when the operation failed, after the failure was reported, or the end came before.
  bool goesOn(Error error, LinkFailure::Kind kind) {
    if (phase_ == Phase::ended) return false;
    if (!error) return true;
    end(kind, endText(error));
    return false;
  }

  std::string endText(Error error) const {
    const auto& reason = socket_.reason().reason;
    if (error == websocket::error::closed && !reason.empty()) {
      return {reason.data(), reason.size()};
    }
    return inWords(error);
  }

  void end(LinkFailure::Kind kind, std::string detail) {
    if (phase_ == Phase::ended) return;
    abandon();
    if (const auto handler = handler_.lock()) handler->connectionEnded({kind, std::move(detail)});
  }

  void abandon() {
    phase_ = Phase::ended;
    deadline_.cancel();
    resolver_.cancel();
    lowest().close();
  }

  void closeNow() {
    if (phase_ == Phase::ended) return;
    if (phase_ == Phase::connecting) return abandon();
    phase_ = Phase::ended;
    // Should the helper not answer the farewell, the socket is closed all the same.
    deadline_.expires_after(kCloseTime);
    deadline_.async_wait([self = shared_from_this()](Error error) {
      if (!error) self->lowest().close();
    });
    socket_.async_close(websocket::close_code::normal, [self = shared_from_this()](Error) {
      self->deadline_.cancel();
      self->lowest().close();
    });
  }

  beast::tcp_stream& lowest() { return beast::get_lowest_layer(socket_); }

  ConnectionSettings settings_;
  DeviceIdentity identity_;
  std::weak_ptr<ConnectionHandler> handler_;
  Tcp::resolver resolver_;
  asio::steady_timer deadline_;
  websocket::stream<beast::ssl_stream<beast::tcp_stream>> socket_;
  websocket::response_type response_;
  beast::flat_buffer buffer_;
  std::deque<Outgoing> unsent_;
  Phase phase_ = Phase::connecting;
  bool isStarting_ = true;              // until the invitation was received
  std::optional<Handshake> handshake_;  // once the helper has shown its certificate
};

}  // namespace

std::shared_ptr<PeerConnection> startWebSocketConnection(asio::io_context& context,
                                                         asio::ssl::context& tls,
                                                         ConnectionSettings settings,
                                                         DeviceIdentity identity,
                                                         std::weak_ptr<ConnectionHandler> handler) {
  auto connection = std::make_shared<WebSocketConnection>(context, tls, std::move(settings),
                                                          std::move(identity), std::move(handler));
  asio::dispatch(context, [connection] { connection->start(); });
  return connection;
}

}  // namespace torvane::ipad
