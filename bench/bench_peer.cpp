#include "bench_peer.h"

#include "protocol/p2p_frame.h"

namespace torvane::bench {
namespace {

const std::string kPath = "/api/state";

testing::LinkClient::Options optionsFor(std::uint16_t port) {
  testing::LinkClient::Options options;
  options.port = port;
  return options;
}

}  // namespace

BenchPeer::BenchPeer(std::uint16_t port, std::uint8_t number)
    : client_(optionsFor(port)), keys_(seedOf(number)), device_(seedOf(number)) {}

std::array<std::uint8_t, 32> BenchPeer::seedOf(std::uint8_t number) {
  std::array<std::uint8_t, 32> seed{};
  seed.fill(number);
  return seed;
}

bool BenchPeer::join() {
  return client_.invite("Bench", keys_) == "waiting" && client_.outcome() == "accepted";
}

bool BenchPeer::authenticate() {
  if (!client_.sendBinary(test::challengeRequest(++lastID_))) return false;
  const auto message = receive();
  const auto reply = message ? P2PFrame::decode(*message) : std::nullopt;
  const auto body = reply ? parseJsonObject(asText(reply->body)) : std::nullopt;
  const auto challenge = body ? stringMember(*body, "challenge") : std::nullopt;
  challenge_ = challenge.value_or("");
  return challenge.has_value();
}

void BenchPeer::prepare(std::size_t count) {
  while (ready_.size() < count) {
    ready_.push_back(
        device_.envelope(challenge_, {{"id", ++lastID_}, {"path", kPath}, {"method", "GET"}}));
  }
}

bool BenchPeer::send() {
  const Bytes message = std::move(ready_.front());
  ready_.pop_front();
  return client_.sendBinary(message);
}

std::optional<Bytes> BenchPeer::receive() {
  auto message = client_.receive();
  if (!message) return std::nullopt;
  return std::move(message->data);
}

Bytes BenchPeer::signedMessage() const {
  const auto envelope = P2PFrame::decode(next()).value();
  Bytes message = toBytes(challenge_);
  message.insert(message.end(), envelope.body.begin(), envelope.body.end());
  return message;
}

Bytes BenchPeer::signature() const {
  return device_.sign(signedMessage());
}

bool isSuccess(const std::optional<Bytes>& message) {
  const auto reply = message ? P2PFrame::decodeView(*message) : std::nullopt;
  return reply && integerMember(reply->header, "status") == 200;
}

}  // namespace torvane::bench
