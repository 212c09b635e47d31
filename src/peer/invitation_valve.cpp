#include "peer/invitation_valve.h"

#include "protocol/device_key.h"

namespace torvane {
namespace {

constexpr double kMinute = 60;  // seconds

// How many of those counted so far stand in the way of one more.
struct Tally {
  std::size_t all = 0;
  std::size_t ofOrigin = 0;
  std::size_t ofKey = 0;
  std::size_t withoutKey = 0;
  std::size_t withoutKeyOfOrigin = 0;

  void count(const Inviter& one, const Inviter& next) {
    const bool isOfOrigin = !next.origin.empty() && one.origin == next.origin;
    ++all;
    if (isOfOrigin) ++ofOrigin;
    if (one.key && one.key == next.key) ++ofKey;
    if (!one.key && !next.key) ++withoutKey;
    if (!one.key && !next.key && isOfOrigin) ++withoutKeyOfOrigin;
  }
};

}  // namespace

Inviter makeInviter(const std::optional<Bytes>& context, const std::string& origin,
                    const RegisteredKeys& registered) {
  if (!context || !SigningPublicKey::fromRaw(*context)) return {std::nullopt, origin, false};
  return {context, origin, registered.contains(*context)};
}

InvitationValve::Waiting InvitationValve::letIn(const Inviter& inviter, double now) {
  const std::lock_guard lock(mutex_);
  forget(now);
  if (!mayWait(inviter) || (!inviter.isRegistered && !mayInvite(inviter))) return nullptr;
  if (!inviter.isRegistered) recent_.push_back({now, inviter});
  auto waiting = std::make_shared<const Inviter>(inviter);
  waiting_.push_back(waiting);
  return waiting;
}

void InvitationValve::forget(double now) {
  while (!recent_.empty() && now - recent_.front().at >= kMinute) recent_.pop_front();
  std::erase_if(waiting_, [](const auto& waiting) { return waiting.expired(); });
}

bool InvitationValve::mayInvite(const Inviter& inviter) const {
  Tally tally;
  for (const auto& recent : recent_) tally.count(recent.inviter, inviter);
  return tally.all < caps_.perMinute && tally.ofOrigin < caps_.perMinuteOfOrigin &&
         tally.ofKey < caps_.perMinuteOfKey && tally.withoutKey < caps_.perMinuteWithoutKey &&
         tally.withoutKeyOfOrigin < caps_.perMinuteWithoutKeyOfOrigin;
}

bool InvitationValve::mayWait(const Inviter& inviter) const {
  Tally tally;
  for (const auto& weak : waiting_) {
    const Waiting waiting = weak.lock();
    if (waiting && waiting->isRegistered == inviter.isRegistered) tally.count(*waiting, inviter);
  }
  if (inviter.isRegistered) return tally.all < caps_.waitingRegistered;
  return tally.all < caps_.waiting && tally.ofOrigin < caps_.waitingOfOrigin &&
         tally.ofKey < caps_.waitingOfKey;
}

}  // namespace torvane
