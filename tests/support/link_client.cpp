#include "support/link_client.h"

#include <openssl/x509.h>
#include <sodium.h>

#include <algorithm>
#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>

#include "peer/link_proof.h"
#include "protocol/base64.h"
#include "protocol/json.h"

namespace torvane::testing {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using Error = beast::error_code;

DeviceKeyPair::DeviceKeyPair(const std::array<std::uint8_t, 32>& seed) {
  crypto_sign_seed_keypair(public_.data(), secret_.data(), seed.data());
}

DeviceKeyPair DeviceKeyPair::numbered(std::uint8_t number) {
  std::array<std::uint8_t, 32> seed{};
  seed[0] = number;
  seed[31] = 1;
  return DeviceKeyPair(seed);
}

Bytes DeviceKeyPair::sign(ByteView message) const {
  Bytes signature(crypto_sign_BYTES);
  crypto_sign_detached(signature.data(), nullptr, message.data(), message.size(), secret_.data());
  return signature;
}

struct LinkClient::Parts {
  explicit Parts(Options chosen) : options(std::move(chosen)) {}

  // Runs the operation that was just begun until it has set `error`, or the deadline passes.
  bool finish(std::optional<Error>& error) {
    loop.restart();
    loop.run_for(options.deadline);
    if (!error) {
      Error ignored;
      beast::get_lowest_layer(stream).close(ignored);
      loop.restart();
      loop.run();
      error = net::error::timed_out;
    }
    lastError = *error;
    return !*error;
  }

  template <typename Begin>
  bool run(Begin begin) {
    std::optional<Error> error;
    begin([&error](Error result, auto&&...) { error = result; });
    return finish(error);
  }

  Options options;
  net::io_context loop{1};
  net::ssl::context tls{net::ssl::context::tls_client};
  websocket::stream<beast::ssl_stream<net::ip::tcp::socket>> stream{loop, tls};
  websocket::response_type response;
  Error lastError;
  bool hasTcp = false;
  bool hasTls = false;
  std::optional<PairingOffer> offer;  // in version 2
  std::optional<LinkNonce> opening;
};

LinkClient::LinkClient(Options options) : parts_(std::make_unique<Parts>(std::move(options))) {
  parts_->stream.read_message_max(std::size_t{80} << 20);
  parts_->stream.auto_fragment(false);
  if (parts_->options.isOldTls) {
    SSL_set_max_proto_version(parts_->stream.next_layer().native_handle(), TLS1_2_VERSION);
  }
}

LinkClient::~LinkClient() = default;

bool LinkClient::connectTcp() {
  if (parts_->hasTcp) return true;
  auto& socket = beast::get_lowest_layer(parts_->stream);
  Error error;
  const auto address = net::ip::make_address(parts_->options.host, error);
  const net::ip::tcp::endpoint server(address, parts_->options.port);
  if (error || socket.open(server.protocol(), error)) return false;
  if (parts_->options.receiveBuffer > 0) {
    socket.set_option(net::socket_base::receive_buffer_size(parts_->options.receiveBuffer), error);
  }
  if (!parts_->options.from.empty()) {
    socket.bind({net::ip::make_address(parts_->options.from, error), 0}, error);
    if (error) return false;
  }
  parts_->hasTcp = parts_->run([&](auto done) { socket.async_connect(server, std::move(done)); });
  socket.set_option(net::ip::tcp::no_delay(true), error);
  return parts_->hasTcp;
}

bool LinkClient::connectTls() {
  if (parts_->hasTls) return true;
  if (!connectTcp()) return false;
  parts_->hasTls = parts_->run([&](auto done) {
    parts_->stream.next_layer().async_handshake(net::ssl::stream_base::client, std::move(done));
  });
  return parts_->hasTls;
}

bool LinkClient::connect() {
  if (!connectTls()) return false;
  const Options& options = parts_->options;
  parts_->stream.set_option(
      websocket::stream_base::decorator([&options](websocket::request_type& request) {
        if (!options.subprotocol.empty()) {
          request.set(http::field::sec_websocket_protocol, options.subprotocol);
        }
        if (!options.origin.empty()) request.set(http::field::origin, options.origin);
      }));
  const std::string host = !options.httpHost.empty()
                               ? options.httpHost
                               : options.host + ":" + std::to_string(options.port);
  return parts_->run([&](auto done) {
    parts_->stream.async_handshake(parts_->response, host, options.target, std::move(done));
  });
}

std::string LinkClient::subprotocol() const {
  const auto chosen = parts_->response[http::field::sec_websocket_protocol];
  return {chosen.data(), chosen.size()};
}

unsigned LinkClient::httpStatus() const {
  return parts_->response.result_int();
}

std::optional<std::pair<unsigned, std::string>> LinkClient::request(const std::string& method,
                                                                    const std::string& target) {
  if (!connectTls()) return std::nullopt;
  http::request<http::empty_body> request;
  request.method_string(method);
  request.target(target);
  request.version(11);
  request.set(http::field::host, "localhost");
  beast::flat_buffer buffer;
  http::response<http::string_body> response;
  auto& stream = parts_->stream.next_layer();
  if (!parts_->run([&](auto done) { http::async_write(stream, request, std::move(done)); }) ||
      !parts_->run(
          [&](auto done) { http::async_read(stream, buffer, response, std::move(done)); })) {
    return std::nullopt;
  }
  return std::pair{response.result_int(), response.body()};
}

std::array<std::uint8_t, 32> LinkClient::certificateHash() const {
  std::array<std::uint8_t, 32> hash{};
  X509* certificate = SSL_get1_peer_certificate(parts_->stream.next_layer().native_handle());
  unsigned size = 0;
  if (certificate != nullptr) X509_digest(certificate, EVP_sha256(), hash.data(), &size);
  X509_free(certificate);
  return hash;
}

bool LinkClient::sendText(std::string_view text) {
  parts_->stream.text(true);
  return parts_->run(
      [&](auto done) { parts_->stream.async_write(net::buffer(text), std::move(done)); });
}

bool LinkClient::sendBinary(ByteView data) {
  parts_->stream.binary(true);
  return parts_->run([&](auto done) {
    parts_->stream.async_write(net::buffer(data.data(), data.size()), std::move(done));
  });
}

std::optional<LinkClient::Message> LinkClient::receive() {
  Message message;
  auto buffer = net::dynamic_buffer(message.data);
  if (!parts_->run([&](auto done) { parts_->stream.async_read(buffer, std::move(done)); })) {
    return std::nullopt;
  }
  message.isText = parts_->stream.got_text();
  return message;
}

unsigned LinkClient::closeCode() const {
  return parts_->stream.reason().code;
}

bool LinkClient::sendRaw(ByteView data) {
  return parts_->run([&](auto done) {
    net::async_write(parts_->stream.next_layer(), net::buffer(data.data(), data.size()),
                     std::move(done));
  });
}

std::optional<std::string> LinkClient::receiveRaw() {
  std::string received;
  auto buffer = net::dynamic_buffer(received);
  parts_->run(
      [&](auto done) { net::async_read(parts_->stream.next_layer(), buffer, std::move(done)); });
  return parts_->lastError == net::error::timed_out ? std::nullopt : std::optional(received);
}

bool LinkClient::waitForEnd() {
  std::array<std::uint8_t, 4096> ignored{};
  auto& socket = beast::get_lowest_layer(parts_->stream);
  while (parts_->run(
      [&](auto done) { socket.async_read_some(net::buffer(ignored), std::move(done)); })) {
  }
  return parts_->lastError != net::error::timed_out;
}

std::size_t LinkClient::takeSlowly(std::size_t bytes, std::chrono::milliseconds time) {
  Bytes part(65536);
  std::size_t taken = 0;
  net::steady_timer timer(parts_->loop);
  const auto begin = std::chrono::steady_clock::now();
  while (taken <= bytes) {
    std::size_t size = 0;
    std::optional<Error> error;
    parts_->stream.next_layer().async_read_some(net::buffer(part), [&](Error e, std::size_t n) {
      error = e;
      size = n;
    });
    if (!parts_->finish(error)) break;
    taken += size;
    timer.expires_at(begin + time * taken / bytes);
    parts_->run([&](auto done) { timer.async_wait(std::move(done)); });
  }
  return taken;
}

bool LinkClient::answerPings(int count) {
  beast::flat_buffer buffer;
  parts_->stream.control_callback([&](websocket::frame_type kind, beast::string_view) {
    if (kind == websocket::frame_type::ping && --count == 0) vanish();
  });
  parts_->run([&](auto done) { parts_->stream.async_read(buffer, std::move(done)); });
  return count <= 0;
}

void LinkClient::vanish() {
  Error ignored;
  beast::get_lowest_layer(parts_->stream).close(ignored);
}

void LinkClient::close() {
  parts_->run([&](auto done) {
    parts_->stream.async_close(websocket::close_code::normal, std::move(done));
  });
}

namespace {

std::optional<LinkNonce> nonceMember(const JsonObject& object, std::string_view key) {
  const auto bytes = base64Decode(stringMember(object, key).value_or(""));
  LinkNonce nonce{};
  if (!bytes || bytes->size() != nonce.size()) return std::nullopt;
  std::ranges::copy(*bytes, nonce.begin());
  return nonce;
}

}  // namespace

std::optional<std::array<std::uint8_t, 32>> LinkClient::receiveHello() {
  const auto message = receive();
  const auto hello = message ? parseJsonObject(message->text()) : std::nullopt;
  if (!hello || stringMember(*hello, "type") != "hello") return std::nullopt;
  if (integerMember(*hello, "version") == 2) {
    const auto commitment = nonceMember(*hello, "commitment");
    if (!commitment) return std::nullopt;
    auto& offer = parts_->offer.emplace();
    offer.commitment = *commitment;
    randombytes_buf(offer.deviceNonce.data(), offer.deviceNonce.size());
  }
  return nonceMember(*hello, "nonce");
}

std::string LinkClient::inviteText(const std::string& name, const DeviceKeyPair& key,
                                   const std::array<std::uint8_t, 32>& nonce) const {
  const auto& offer = parts_->offer;
  const Bytes message = proofMessage(nonce, certificateHash(), offer);
  JsonObject invitation{{"type", "invite"},
                        {"name", name},
                        {"context", base64Encode(key.publicKey())},
                        {"signature", base64Encode(key.sign(message))}};
  if (offer) invitation["nonce"] = base64Encode(offer->deviceNonce);
  return serializeJson(invitation).value_or("");
}

std::string LinkClient::invite(const std::string& name, const DeviceKeyPair& key) {
  if (!connect()) return "";
  const auto nonce = receiveHello();
  if (!nonce || !sendText(inviteText(name, key, *nonce))) return "";
  return outcome();
}

std::string LinkClient::outcome() {
  const auto message = receive();
  const auto object = message ? parseJsonObject(message->text()) : std::nullopt;
  if (!object) return "";
  const auto type = stringMember(*object, "type").value_or("");
  if (type == "waiting") parts_->opening = nonceMember(*object, "opening");
  return type == "refused" ? stringMember(*object, "reason").value_or("") : type;
}

std::optional<std::string> LinkClient::digits(const DeviceKeyPair& key) const {
  const auto& offer = parts_->offer;
  const auto& opening = parts_->opening;
  if (!offer || !opening || pairingCommitment(*opening) != offer->commitment) return std::nullopt;
  return pairingDigits({key.publicKey(), certificateHash(), *opening, offer->deviceNonce});
}

}  // namespace torvane::testing
