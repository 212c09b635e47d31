#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "ports/peer_session.h"

namespace torvane {

// Bytes of received messages, from their first byte until they are answered or dropped.
struct ReceiveShares {
  std::size_t inAll = std::size_t{64} << 20;
  std::size_t reserved = std::size_t{16} << 20;  // of these, for peers that hold no more than `own`
  std::size_t ofOne = std::size_t{16} << 20;     // for one peer
  std::size_t own = std::size_t{64} << 10;       // what a peer gets however much the others hold
};

// What a message takes beside its bytes until it is answered.
inline constexpr std::size_t kMessageOverhead = 1024;

// Who may be read from. A peer beyond its share waits until some of its messages are answered;
// one that holds little is read from though others hold all the rest. Waiting has an end only while
// complete messages are held, so a peer is never told to wait for its own unfinished one, and too
// much of those costs a connection. Any thread.
class ReceiveBudget final : public std::enable_shared_from_this<ReceiveBudget> {
 public:
  // `roomAgain` is called on any thread when a peer that was told to wait may be read from.
  ReceiveBudget(const ReceiveShares& shares, std::function<void()> roomAgain)
      : shares_(shares), roomAgain_(std::move(roomAgain)) {}

  // A message that is still coming in has grown, or is given up.
  void partialChanged(std::uint64_t peer, std::size_t before, std::size_t after);
  [[nodiscard]] bool isExceededByPartials() const;

  // A complete message of the peer, which counts until the last copy of the lease has gone.
  [[nodiscard]] MessageLease hold(std::uint64_t peer, std::size_t bytes);

  // False: the peer has to wait.
  [[nodiscard]] bool mayRead(std::uint64_t peer);

  // The peer has gone: it waits no longer. What it holds still counts.
  void leave(std::uint64_t peer);

 private:
  struct Account {
    std::size_t partial = 0;
    std::size_t held = 0;
    bool isWaiting = false;

    [[nodiscard]] std::size_t sum() const { return partial + held; }
  };
  class Lease;

  void release(std::uint64_t peer, std::size_t bytes);
  void change(std::uint64_t peer, const std::function<void(Account&)>& how);
  [[nodiscard]] bool hasRoom(const Account& account) const;
  [[nodiscard]] bool endWaits();
  [[nodiscard]] std::size_t common(const Account& account) const;

  const ReceiveShares shares_;
  const std::function<void()> roomAgain_;

  mutable std::mutex mutex_;
  std::map<std::uint64_t, Account> accounts_;
  std::size_t partial_ = 0;
  std::size_t held_ = 0;
  std::size_t common_ = 0;   // what goes beyond the peers' own
  std::size_t waiting_ = 0;  // peers
};

}  // namespace torvane
