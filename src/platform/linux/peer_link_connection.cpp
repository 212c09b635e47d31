#include "platform/linux/peer_link_connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>

#include "platform/linux/own_addresses.h"
#include "platform/linux/peer_link_invitation.h"
#include "platform/linux/peer_link_request.h"
#include "platform/linux/peer_link_tls.h"

namespace torvane {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;

namespace {

using Error = beast::error_code;
using Socket = net::basic_stream_socket<net::ip::tcp, net::io_context::executor_type>;
using TlsStream = beast::ssl_stream<Socket>;
using Stream = websocket::stream<TlsStream, false>;  // no compression
using Incoming = net::dynamic_vector_buffer<std::uint8_t, std::allocator<std::uint8_t>>;
using RequestParser = http::request_parser<http::empty_body>;
using Response = http::response<http::span_body<const char>>;

constexpr std::uint32_t kMaxRequestHeader = 8192;
constexpr std::size_t kReadStep = 65536;
constexpr std::size_t kWriteStep = std::size_t{256} << 10;

class BeastConnection final : public PeerConnection,
                              public std::enable_shared_from_this<BeastConnection> {
 public:
  BeastConnection(const PeerConnectionSetup& setup, std::uint64_t token, Socket&& socket)
      : token_(token),
        tls_(setup.tls),
        owner_(setup.owner),
        budget_(setup.budget),
        messageBytes_(setup.caps.messageBytes),
        stream_(std::move(socket), setup.tls->context),
        liveness_(setup.times, LinkClock::now()),
        outbox_(std::make_shared<PeerOutbox>(setup.caps.unsentBytes)) {}

  // A completion that keeps the connection alive.
  template <typename... Arguments>
  auto on(void (BeastConnection::*method)(Arguments...)) {
    return beast::bind_front_handler(method, shared_from_this());
  }

  void start() override {
    stream_.next_layer().async_handshake(net::ssl::stream_base::server,
                                         on(&BeastConnection::didShakeHands));
  }

  void setPhase(LinkPhase phase) override {
    phase_ = phase;
    liveness_.invited(LinkClock::now());
    if (phase == LinkPhase::frames) stream_.read_message_max(messageBytes_);
  }

  const std::shared_ptr<PeerOutbox>& outbox() const override { return outbox_; }

  void flush() override {
    if (!isOpen_ || isWriting_) return;
    if (sending_.empty()) sending_ = outbox_->takeAll();
    if (sending_.empty()) return closeWhenAsked();
    writePart();
  }

  void resume() override {
    if (isOpen_ && !isReading_ && !closeCode_) readOn();
  }

  void tick(LinkTime now) override {
    const auto action = liveness_.tick(now, isReading_);
    if (action == PeerLiveness::Action::drop) end();
    if (action != PeerLiveness::Action::ping || isPinging_) return;
    isPinging_ = true;
    stream_.async_ping({}, [self = shared_from_this()](Error) { self->isPinging_ = false; });
  }

  void close(LinkCloseCode code) override {
    if (!isOpen_) return end();
    if (closeCode_) return;
    closeCode_ = code;
    liveness_.closing(LinkClock::now());
    flush();
  }

  void drop() override { end(); }

 private:
  void didShakeHands(Error error) {
    if (error) return end();
    parser_.emplace().header_limit(kMaxRequestHeader);
    http::async_read_header(stream_.next_layer(), requestBuffer_, *parser_,
                            on(&BeastConnection::didReadRequest));
  }

  void didReadRequest(Error error, std::size_t size) {
    // The parser's own limit is one for the request line and one for all else.
    if (error || size > kMaxRequestHeader) return end();
    const LinkRequest request = readLinkRequest(parser_->get());
    const bool isPage = request.originCount > 0;  // which alone is asked how it calls this computer
    const auto handle = beast::get_lowest_layer(stream_).native_handle();
    const LinkAnswer answer = answerTo(request, isPage ? ownHosts(handle) : OwnHosts{});
    if (answer.status != 101) return respond(answer);
    version_ = request.version.value_or(version_);
    if (requestBuffer_.size() != 0) return end();  // nobody may speak before the answer
    stream_.set_option(websocket::stream_base::timeout{websocket::stream_base::none(),
                                                       websocket::stream_base::none(), false});
    stream_.set_option(choosing(version_));
    stream_.async_accept(parser_->get(), on(&BeastConnection::didAccept));
  }

  void respond(const LinkAnswer& answer) {
    response_.emplace(http::status(answer.status), 11);
    response_->set(http::field::content_type,
                   answer.status == 200 ? "text/html; charset=utf-8" : "text/plain; charset=utf-8");
    response_->set("X-Content-Type-Options", "nosniff");
    if (answer.status == 405) response_->set(http::field::allow, "GET");
    response_->keep_alive(false);
    response_->body() = {answer.body.data(), answer.body.size()};
    response_->prepare_payload();
    http::async_write(stream_.next_layer(), *response_, on(&BeastConnection::didRespond));
  }

  void didRespond(Error error, std::size_t) {
    if (error) return end();
    stream_.next_layer().async_shutdown([self = shared_from_this()](Error) { self->end(); });
  }

  void didAccept(Error error) {
    if (error || isEnded_) return end();
    parser_.reset();
    requestBuffer_ = {};
    isOpen_ = true;
    stream_.read_message_max(kMaxControlMessage);
    stream_.auto_fragment(false);
    stream_.control_callback(
        [this](websocket::frame_type kind, beast::string_view) { didReceiveControl(kind); });
    owner_.connectionDidOpen(token_, version_);
    readOn();
  }

  void didReceiveControl(websocket::frame_type kind) {
    if (kind != websocket::frame_type::close) return liveness_.heard(LinkClock::now());
    if (closeCode_) return;
    liveness_.closing(LinkClock::now());
    owner_.connectionIsLeaving(token_);
  }

  void readOn() {
    if (isEnded_) return;
    isReading_ = budget_->mayRead(token_);
    if (!isReading_) return;
    if (!incoming_) incoming_.emplace(message_);
    stream_.async_read_some(*incoming_, kReadStep, on(&BeastConnection::didRead));
  }

  void didRead(Error error, std::size_t) {
    isReading_ = false;
    // After close() the closing handshake reads what is still to come.
    if (isEnded_ || (closeCode_ && !error)) return;
    if (error) return closeCode_ ? void() : end();
    liveness_.heard(LinkClock::now());
    if (stream_.got_text() != (phase_ == LinkPhase::invitation) || phase_ == LinkPhase::nothing) {
      return owner_.connectionDidBreakRules(token_);
    }
    if (!stream_.is_message_done()) return keepPart();
    deliver();
    if (!closeCode_) readOn();
  }

  void keepPart() {
    countPart(message_.capacity());
    if (budget_->isExceededByPartials()) return end();
    readOn();
  }

  void countPart(std::size_t bytes) {
    budget_->partialChanged(token_, std::exchange(partial_, bytes), bytes);
  }

  void deliver() {
    incoming_.reset();
    Bytes message = std::exchange(message_, {});
    if (phase_ == LinkPhase::invitation) {
      countPart(0);
      return owner_.connectionDidSendText(token_, asText(message));
    }
    auto lease = budget_->hold(token_, message.capacity() + kMessageOverhead);
    countPart(0);
    owner_.connectionDidSendFrame(token_, std::move(message), std::move(lease));
  }

  // Long messages go in parts, with room for pings in between.
  void writePart() {
    const OutgoingMessage& message = sending_.front();
    const auto part = net::buffer(net::buffer(message.data) + written_, kWriteStep);
    const bool isLast = written_ + part.size() == message.data.size();
    isWriting_ = true;
    stream_.text(message.isText);
    stream_.async_write_some(isLast, part, on(&BeastConnection::didWrite));
  }

  void didWrite(Error error, std::size_t size) {
    isWriting_ = false;
    written_ += size;
    // It waits for the rest of something long, and takes it.
    if (size == kWriteStep && !error) liveness_.heard(LinkClock::now());
    if (!error && written_ < sending_.front().data.size()) return writePart();
    outbox_->wasSent(sending_.front());
    sending_.pop_front();
    written_ = 0;
    if (error) return end();
    flush();
  }

  void closeWhenAsked() {
    if (!closeCode_ || isClosing_) return;
    isClosing_ = true;
    stream_.async_close(websocket::close_code(static_cast<std::uint16_t>(*closeCode_)),
                        [self = shared_from_this()](Error) { self->end(); });
  }

  void end() {
    if (std::exchange(isEnded_, true)) return;
    isOpen_ = false;
    countPart(0);
    budget_->leave(token_);
    outbox_->close();
    Error ignored;
    beast::get_lowest_layer(stream_).close(ignored);
    owner_.connectionDidEnd(token_);
  }

  const std::uint64_t token_;
  const std::shared_ptr<LinkTls> tls_;
  PeerConnectionOwner& owner_;
  const std::shared_ptr<ReceiveBudget> budget_;
  const std::size_t messageBytes_;

  Stream stream_;
  beast::flat_buffer requestBuffer_;
  std::optional<RequestParser> parser_;
  std::optional<Response> response_;

  LinkVersion version_ = LinkVersion::one;
  LinkPhase phase_ = LinkPhase::invitation;
  PeerLiveness liveness_;
  bool isOpen_ = false;  // as a WebSocket
  bool isReading_ = false;
  bool isWriting_ = false;
  bool isPinging_ = false;
  bool isClosing_ = false;
  bool isEnded_ = false;
  std::optional<LinkCloseCode> closeCode_;

  Bytes message_;  // as far as it has come
  std::optional<Incoming> incoming_;
  std::size_t partial_ = 0;  // what the budget was told of it
  std::deque<OutgoingMessage> sending_;
  std::size_t written_ = 0;  // of the first of these
  const std::shared_ptr<PeerOutbox> outbox_;
};

}  // namespace

std::shared_ptr<PeerConnection> makePeerConnection(const PeerConnectionSetup& setup,
                                                   std::uint64_t token, int socket, bool isIpv6) {
  Socket taken(setup.loop);
  Error error;
  taken.assign(isIpv6 ? net::ip::tcp::v6() : net::ip::tcp::v4(), socket, error);
  if (error) {
    ::close(socket);
    return nullptr;
  }
  taken.set_option(net::ip::tcp::no_delay(true), error);
  // A ping is not to queue up behind megabytes in the kernel: the answer would come too late.
  const int notSent = static_cast<int>(kWriteStep);
  ::setsockopt(socket, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &notSent, sizeof notSent);
  return std::make_shared<BeastConnection>(setup, token, std::move(taken));
}

}  // namespace torvane
