#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "protocol/bytes.h"

namespace torvane {

class RegisteredKeys;

// One end of the peer link. Two identifiers are the same peer when their tokens are equal; a
// reconnecting device is a new peer. Display names are not unique.
struct PeerID {
  std::uint64_t token = 0;
  std::string displayName;

  bool operator==(const PeerID& other) const { return token == other.token; }
  std::strong_ordering operator<=>(const PeerID& other) const { return token <=> other.token; }
};

enum class PeerState { notConnected = 0, connecting = 1, connected = 2 };

// Stands for a received message until it is answered or dropped; its sender is charged for the
// message until the last copy has gone. Null where nobody keeps account.
using MessageLease = std::shared_ptr<const void>;

// Whom an answer goes to, and what it answers.
struct Asker {
  PeerID peer;
  MessageLease lease{};
};

// Connections to the peers whose invitations were accepted into this session.
class PeerSession {
 public:
  virtual ~PeerSession() = default;

  // The peers connected now, in the session's own order. Any thread.
  [[nodiscard]] virtual std::vector<PeerID> connectedPeers() const = 0;

  // The longest message that can be sent to a peer, in bytes. Any thread.
  [[nodiscard]] virtual std::size_t longestMessage() const = 0;

  // Sends one message, whole and in order with the others to this peer. Any thread; returns at
  // once. A peer that has gone is ignored. The lease of what is answered goes when the message has.
  virtual void sendReliably(Bytes message, const Asker& to) = 0;

  // Closes every connection. Main thread only.
  virtual void disconnect() = 0;
};

// Calls may come on any thread; the session passed is the one that reports.
class PeerSessionDelegate {
 public:
  virtual ~PeerSessionDelegate() = default;
  virtual void sessionPeerDidChange(std::shared_ptr<PeerSession> session, PeerID peer,
                                    PeerState state) = 0;
  virtual void sessionDidReceive(std::shared_ptr<PeerSession> session, Bytes data, Asker from) = 0;
};

// Answers one invitation: called exactly once, on the main thread; with a session to accept,
// with none to refuse.
using InvitationHandler = std::function<void(bool accept, std::shared_ptr<PeerSession> session)>;

struct Invitation {
  PeerID peer;
  std::optional<Bytes> context{};       // what the inviter sent along
  std::optional<std::string> digits{};  // what the inviter shows, where the transport makes any
};

// Calls may come on any thread.
class AdvertiserDelegate {
 public:
  virtual ~AdvertiserDelegate() = default;

  // `error` is a sentence for the user.
  virtual void advertiserDidNotStart(std::string error) = 0;

  // An error has passed. A transport that cannot tell does not call it.
  virtual void advertiserDidRecover() = 0;

  virtual void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) = 0;
};

// Makes this computer visible to nearby devices and receives their invitations.
class Advertiser {
 public:
  virtual ~Advertiser() = default;
  virtual void start() = 0;  // main thread only
  virtual void stop() = 0;   // main thread only
};

// The transport. Delegates outlive every object made here. Main thread only.
class PeerLink {
 public:
  virtual ~PeerLink() = default;

  [[nodiscard]] virtual PeerID makePeerID(const std::string& displayName) = 0;
  [[nodiscard]] virtual std::shared_ptr<PeerSession> makeSession(const PeerID& self,
                                                                 PeerSessionDelegate& delegate) = 0;

  // Invitations of registered keys are kept from the program by no limit that strangers can reach.
  [[nodiscard]] virtual std::unique_ptr<Advertiser> makeAdvertiser(
      const PeerID& self, const std::string& serviceType,
      std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate) = 0;

  // Where devices that do not find this computer reach it now, each as "192.0.2.7:48484"; empty
  // where there is no network, nothing is advertised, or the transport knows no addresses.
  [[nodiscard]] virtual std::vector<std::string> addresses() const = 0;
};

}  // namespace torvane
