#include "platform/linux/peer_link_limits.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace torvane {
namespace {

constexpr std::chrono::minutes kMinute{1};
constexpr std::size_t kMostAddresses = 1024;
constexpr std::size_t kMostAcceptedKeys = 1024;

}  // namespace

void MinuteValve::forget(LinkTime now) {
  while (!spent_.empty() && now - spent_.front() >= kMinute) spent_.pop_front();
}

bool MinuteValve::isOpen(LinkTime now) {
  forget(now);
  return spent_.size() < most_;
}

bool MinuteValve::isUnused(LinkTime now) {
  forget(now);
  return spent_.empty();
}

void MinuteValve::spend(LinkTime now) {
  forget(now);
  if (spent_.size() < most_) spent_.push_back(now);
}

PeerLinkLimits::PeerLinkLimits(const PeerLinkCaps& caps)
    : caps_(caps), invitations_(caps.invitationsPerMinute) {}

bool PeerLinkLimits::admitStranger(const std::string& address) {
  if (strangerCount_ >= caps_.strangers) return false;
  const auto known = strangers_.find(address);
  if (known != strangers_.end() && known->second >= caps_.strangersPerAddress) return false;
  ++strangers_[address];
  ++strangerCount_;
  return true;
}

void PeerLinkLimits::strangerLeft(const std::string& address) {
  const auto known = strangers_.find(address);
  if (known == strangers_.end()) return;
  --strangerCount_;
  if (--known->second == 0) strangers_.erase(known);
}

bool PeerLinkLimits::beginWaiting() {
  if (waiting_ >= caps_.waiting || connected_ >= caps_.connected) return false;
  ++waiting_;
  return true;
}

bool PeerLinkLimits::mayProve(const std::string& address, LinkTime now) {
  const auto known = failedProofs_.find(address);
  return known == failedProofs_.end() || known->second.isOpen(now);
}

void PeerLinkLimits::proofFailed(const std::string& address, LinkTime now) {
  if (failedProofs_.size() >= kMostAddresses && !failedProofs_.contains(address)) {
    makeRoomForAddress(now);
  }
  failedProofs_.try_emplace(address, caps_.failedProofsPerMinute).first->second.spend(now);
}

void PeerLinkLimits::makeRoomForAddress(LinkTime now) {
  for (auto entry = failedProofs_.begin(); entry != failedProofs_.end();) {
    entry = entry->second.isUnused(now) ? failedProofs_.erase(entry) : std::next(entry);
  }
  if (failedProofs_.size() >= kMostAddresses) failedProofs_.erase(failedProofs_.begin());
}

bool PeerLinkLimits::letInvitationThrough(const std::optional<Bytes>& key, LinkTime now) {
  if (key && acceptedKeys_.contains(*key)) return true;
  if (!invitations_.isOpen(now)) return false;
  invitations_.spend(now);
  return true;
}

void PeerLinkLimits::wasAccepted(const Bytes& key) {
  if (acceptedKeys_.size() < kMostAcceptedKeys) acceptedKeys_.insert(key);
}

std::size_t ReceiveBudget::takeUnmarked() {
  return std::exchange(unmarked_, 0);
}

PeerLiveness::Action PeerLiveness::tick(LinkTime now, bool isReading) {
  if (deadline_) return now >= *deadline_ ? Action::drop : Action::none;
  if (!isReading) heard_ = now;
  if (now - heard_ >= times_.dead) return Action::drop;
  if (now - std::max(heard_, pinged_) < times_.ping) return Action::none;
  pinged_ = now;
  return Action::ping;
}

}  // namespace torvane
