#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "protocol/bytes.h"
#include "torvane_ipad/device_identity.h"
#include "torvane_ipad/link_failure.h"

namespace torvane::ipad {

struct ConnectionSettings {
  std::string host;  // name or address
  std::uint16_t port = 0;
  std::string displayName;
  std::optional<std::vector<std::string>> trusted;  // fingerprints; none: trust whoever answers
  std::chrono::milliseconds timeout{};  // from the start until the invitation is received
  // Without a sign of life for this long, or an answer to the ping after half of it, the helper is
  // lost. It sends pings of its own after 3 s.
  std::chrono::milliseconds mostSilence{12'000};
};

struct Welcome {
  std::string helperName;
  std::string fingerprint;
  std::string digits;  // that the helper's question shows too, if it asks one
};

// Called on the network's thread. Nothing is called after connectionEnded().
class ConnectionHandler {
 public:
  virtual ~ConnectionHandler() = default;
  virtual void connectionWaits(const Welcome& welcome) = 0;  // for the helper's user
  virtual void connectionAccepted(const Welcome& welcome) = 0;
  virtual void connectionReceived(Bytes frame) = 0;
  virtual void connectionEnded(const LinkFailure& failure) = 0;
};

// One connection to a helper: it is trusted or given up, invited with the device's key, and then
// carries frames.
class PeerConnection {
 public:
  virtual ~PeerConnection() = default;

  // Both may be called on any thread. Frames are sent in order; a closed connection ignores them.
  virtual void send(Bytes frame) = 0;
  virtual void close() = 0;  // connectionEnded() is not called then
};

// The thread that all connections live on. It outlives every connection made here.
class PeerNetwork {
 public:
  PeerNetwork();
  ~PeerNetwork();
  PeerNetwork(const PeerNetwork&) = delete;
  PeerNetwork& operator=(const PeerNetwork&) = delete;

  // The handler is asked for as long as it exists.
  [[nodiscard]] std::shared_ptr<PeerConnection> connect(ConnectionSettings settings,
                                                        DeviceIdentity identity,
                                                        std::weak_ptr<ConnectionHandler> handler);

  // Calls `action` on the network's thread.
  void callAfter(std::chrono::nanoseconds delay, std::function<void()> action);

 private:
  struct Io;
  std::unique_ptr<Io> io_;
};

}  // namespace torvane::ipad
