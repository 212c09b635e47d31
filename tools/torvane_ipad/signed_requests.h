#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "protocol/bytes.h"
#include "torvane_ipad/device_identity.h"

namespace torvane::ipad {

struct Request {
  std::string path;
  std::string method = "GET";
  std::string contentType{};  // empty: not sent
  Bytes body{};
};

struct Reply {
  std::int64_t id = 0;
  std::int64_t status = 0;
  std::string contentType;
  std::optional<std::string> error;
  Bytes body;
};

// None when the frame is not a well-formed reply.
[[nodiscard]] std::optional<Reply> parseReply(ByteView frame);

// Makes the frames of one connection; each gets an id that the connection has not seen.
class SignedRequests {
 public:
  struct Outgoing {
    std::int64_t id;
    Bytes frame;
  };

  explicit SignedRequests(DeviceIdentity identity, std::int64_t firstId = 1)
      : identity_(std::move(identity)), nextId_(firstId) {}

  [[nodiscard]] Outgoing makeChallengeRequest();

  // Takes the challenge from the reply; false when it holds none.
  [[nodiscard]] bool acceptChallenge(const Reply& reply);

  // Signed for the accepted challenge. None when the path, method or type is not UTF-8.
  [[nodiscard]] std::optional<Outgoing> sign(const Request& request);

 private:
  DeviceIdentity identity_;
  std::int64_t nextId_;
  std::string challenge_;
};

}  // namespace torvane::ipad
