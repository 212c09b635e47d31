#include "peer/receive_budget.h"

#include <utility>

namespace torvane {

class ReceiveBudget::Lease {
 public:
  Lease(std::shared_ptr<ReceiveBudget> budget, std::uint64_t peer, std::size_t bytes)
      : budget_(std::move(budget)), peer_(peer), bytes_(bytes) {}
  ~Lease() { budget_->release(peer_, bytes_); }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;

 private:
  const std::shared_ptr<ReceiveBudget> budget_;
  const std::uint64_t peer_;
  const std::size_t bytes_;
};

void ReceiveBudget::partialChanged(std::uint64_t peer, std::size_t before, std::size_t after) {
  change(peer, [&](Account& account) {
    account.partial += after - before;
    partial_ += after - before;
  });
}

bool ReceiveBudget::isExceededByPartials() const {
  const std::lock_guard lock(mutex_);
  return partial_ > shares_.inAll;
}

MessageLease ReceiveBudget::hold(std::uint64_t peer, std::size_t bytes) {
  change(peer, [&](Account& account) {
    account.held += bytes;
    held_ += bytes;
  });
  return std::make_shared<const Lease>(shared_from_this(), peer, bytes);
}

void ReceiveBudget::release(std::uint64_t peer, std::size_t bytes) {
  change(peer, [&](Account& account) {
    account.held -= bytes;
    held_ -= bytes;
  });
}

bool ReceiveBudget::mayRead(std::uint64_t peer) {
  const std::lock_guard lock(mutex_);
  const auto known = accounts_.find(peer);
  if (known == accounts_.end() || hasRoom(known->second)) return true;
  if (!std::exchange(known->second.isWaiting, true)) ++waiting_;
  return false;
}

void ReceiveBudget::leave(std::uint64_t peer) {
  change(peer, [&](Account& account) {
    if (std::exchange(account.isWaiting, false)) --waiting_;
  });
}

void ReceiveBudget::change(std::uint64_t peer, const std::function<void(Account&)>& how) {
  bool isRoomAgain = false;
  {
    const std::lock_guard lock(mutex_);
    Account& account = accounts_[peer];
    common_ -= common(account);
    how(account);
    common_ += common(account);
    isRoomAgain = endWaits();
    if (account.sum() == 0 && !account.isWaiting) accounts_.erase(peer);
  }
  if (isRoomAgain) roomAgain_();
}

// One that waits does so until a quarter of the room is free: the way to and fro for each message
// would cost more than the message.
bool ReceiveBudget::hasRoom(const Account& account) const {
  if (account.sum() <= shares_.own) return true;
  const auto most = [&](std::size_t limit) {
    return account.isWaiting ? limit - limit / 4 : limit;
  };
  if (account.held > 0 && account.sum() > most(shares_.ofOne)) return false;
  return held_ == 0 || common_ <= most(shares_.inAll - shares_.reserved);
}

bool ReceiveBudget::endWaits() {
  bool isAnyEnded = false;
  if (waiting_ == 0) return false;
  for (auto& [peer, account] : accounts_) {
    if (!account.isWaiting || !hasRoom(account)) continue;
    account.isWaiting = false;
    --waiting_;
    isAnyEnded = true;
  }
  return isAnyEnded;
}

std::size_t ReceiveBudget::common(const Account& account) const {
  return account.sum() > shares_.own ? account.sum() - shares_.own : 0;
}

}  // namespace torvane
