#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "support/link_client.h"
#include "support/signing_device.h"

namespace torvane::bench {

// A device on the link, with requests signed in advance: what signing costs is the device's affair.
class BenchPeer {
 public:
  BenchPeer(std::uint16_t port, std::uint8_t number);

  // Pairs and connects; whether that worked.
  [[nodiscard]] bool join();
  // Asks for the challenge that its requests are signed with; whether it came.
  [[nodiscard]] bool authenticate();

  // Makes requests ready until `count` are.
  void prepare(std::size_t count);
  [[nodiscard]] const Bytes& next() const { return ready_.front(); }

  // Sends the first of them; whether it was sent.
  [[nodiscard]] bool send();
  // Waits for a message; none when the connection ended.
  [[nodiscard]] std::optional<Bytes> receive();

  // What the signature of the first request is over, and the signature.
  [[nodiscard]] Bytes signedMessage() const;
  [[nodiscard]] Bytes signature() const;
  [[nodiscard]] Bytes rawKey() const { return device_.rawKey(); }

 private:
  static std::array<std::uint8_t, 32> seedOf(std::uint8_t number);

  testing::LinkClient client_;
  testing::DeviceKeyPair keys_;
  test::SigningDevice device_;  // the same key
  std::string challenge_ = "no challenge";
  std::int64_t lastID_ = 0;
  std::deque<Bytes> ready_;
};

// Whether a message is a reply with status 200.
[[nodiscard]] bool isSuccess(const std::optional<Bytes>& message);

}  // namespace torvane::bench
