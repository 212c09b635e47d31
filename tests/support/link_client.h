#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/bytes.h"

namespace torvane::testing {

// An Ed25519 key pair from a 32-byte seed (RFC 8032's secret key).
class DeviceKeyPair {
 public:
  explicit DeviceKeyPair(const std::array<std::uint8_t, 32>& seed);

  // A key of its own for every number.
  static DeviceKeyPair numbered(std::uint8_t number);

  [[nodiscard]] Bytes publicKey() const { return {public_.begin(), public_.end()}; }
  [[nodiscard]] Bytes sign(ByteView message) const;

 private:
  std::array<std::uint8_t, 32> public_{};
  std::array<std::uint8_t, 64> secret_{};
};

// A blocking peer of the link, for tests and benchmarks. Every call waits for real events and
// gives up after `deadline`; what fails is told by the result.
class LinkClient {
 public:
  struct Options {
    std::uint16_t port = 0;
    std::string host = "127.0.0.1";
    std::string target = "/link";
    std::string subprotocol = "torvane.link.2";  // those offered, by commas; empty: none
    std::string origin;                          // empty: no such header
    std::string httpHost;                        // the "Host" header; empty: host and port
    std::chrono::milliseconds deadline{20'000};
    int receiveBuffer = 0;  // bytes, where a slow reader is wanted
    bool isOldTls = false;  // TLS 1.2
    std::string from;       // the address to connect from, where it matters
  };

  explicit LinkClient(Options options);
  ~LinkClient();
  LinkClient(const LinkClient&) = delete;
  LinkClient& operator=(const LinkClient&) = delete;

  // The steps of connecting; each includes those before it that were not taken.
  bool connectTcp();
  bool connectTls();
  bool connect();  // to the open WebSocket

  // The subprotocol that was chosen.
  [[nodiscard]] std::string subprotocol() const;

  // The HTTP status of a connect() that was refused.
  [[nodiscard]] unsigned httpStatus() const;

  // One request that is no upgrade: the status and the body.
  std::optional<std::pair<unsigned, std::string>> request(const std::string& method,
                                                          const std::string& target);

  // SHA-256 of the DER of the server's certificate.
  [[nodiscard]] std::array<std::uint8_t, 32> certificateHash() const;

  struct Message {
    bool isText = false;
    Bytes data;
    [[nodiscard]] std::string text() const { return {data.begin(), data.end()}; }
  };
  bool sendText(std::string_view text);
  bool sendBinary(ByteView data);
  std::optional<Message> receive();  // none when the connection ended; see closeCode()

  // After receive() gave none: the code of the server's close frame, 0 when there was none.
  [[nodiscard]] unsigned closeCode() const;

  // Raw bytes inside TLS, past the WebSocket; for misbehaviour.
  bool sendRaw(ByteView data);
  // All bytes inside TLS up to the end of the connection; none when that did not come.
  std::optional<std::string> receiveRaw();
  // Waits, reading and answering nothing of the WebSocket, until the server has closed; true when
  // it did so before the deadline.
  bool waitForEnd();
  // Takes so many bytes inside TLS at an even pace over `time`, and answers none; how many came.
  std::size_t takeSlowly(std::size_t bytes, std::chrono::milliseconds time);
  // Answers so many pings; false when they did not come. Ends the connection.
  bool answerPings(int count);
  // Closes the TCP connection without a word.
  void vanish();
  void close();  // with the WebSocket's closing handshake

  // The steps of an invitation, in the version that the hello names.
  std::optional<std::array<std::uint8_t, 32>> receiveHello();  // the nonce
  [[nodiscard]] std::string inviteText(const std::string& name, const DeviceKeyPair& key,
                                       const std::array<std::uint8_t, 32>& nonce) const;
  // Connects, invites and waits for "waiting", or gives the reason of the refusal, or "" when the
  // connection ended.
  std::string invite(const std::string& name, const DeviceKeyPair& key);
  // The member of the next message that says the outcome: "accepted" or the reason of a refusal.
  std::string outcome();

  // After invite(): what the device shows. None in version 1, and when the computer did not open
  // its commitment.
  [[nodiscard]] std::optional<std::string> digits(const DeviceKeyPair& key) const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace torvane::testing
