#include "torvane_ipad/helper_session.h"

#include <algorithm>
#include <condition_variable>
#include <iterator>
#include <mutex>

namespace torvane::ipad {
namespace {

// A paired device is accepted at once; after this long the helper's user was asked.
constexpr auto kUserWasAsked = std::chrono::milliseconds(500);
// What a helper may send that nobody has asked for.
constexpr std::size_t kMostUnread = 80U * 1024 * 1024;

}  // namespace

// Carries what happens on the network's thread to the thread that waits for it.
class HelperSession::Mailbox : public ConnectionHandler {
 public:
  using Duration = HelperSession::Duration;

  void connectionWaits(const Welcome& welcome) override {
    const std::lock_guard lock(mutex_);
    welcome_ = welcome;
    isWaiting_ = true;
    changed_.notify_all();
  }

  void connectionAccepted(const Welcome& welcome) override {
    const std::lock_guard lock(mutex_);
    welcome_ = welcome;
    isAccepted_ = true;
    changed_.notify_all();
  }

  void connectionReceived(Bytes frame) override {
    std::unique_lock lock(mutex_);
    if (receiver_) {
      const Receiver receiver = receiver_;
      lock.unlock();
      return receiver(std::move(frame));
    }
    auto reply = parseReply(frame);
    unreadSize_ += frame.size();
    if (!reply) {
      failure_ = {LinkFailure::Kind::misbehaviour, "it sent a malformed answer"};
    } else if (unreadSize_ > kMostUnread) {
      failure_ = {LinkFailure::Kind::misbehaviour, "it sent far more than was asked for"};
    } else {
      unread_.push_back(std::move(*reply));
    }
    changed_.notify_all();
  }

  void connectionEnded(const LinkFailure& failure) override {
    std::unique_lock lock(mutex_);
    if (!failure_) failure_ = failure;
    const EndListener onEnd = onEnd_;
    changed_.notify_all();
    lock.unlock();
    if (onEnd) onEnd();
  }

  // Until the invitation arrived and was answered, or long enough has passed without an answer to
  // know that the helper's user was asked (false).
  [[nodiscard]] bool awaitQuickAnswer() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return isWaiting_ || isAccepted_ || failure_; });
    return changed_.wait_for(lock, kUserWasAsked, [&] { return isAccepted_ || failure_; });
  }

  [[nodiscard]] std::variant<Welcome, LinkFailure> awaitAccepted(Duration patience) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, patience, [&] { return isAccepted_ || failure_; });
    if (failure_) return *failure_;
    if (!isAccepted_) return LinkFailure{LinkFailure::Kind::notApproved, ""};
    return welcome_;
  }

  [[nodiscard]] Welcome welcome() {
    const std::lock_guard lock(mutex_);
    return welcome_;
  }

  // All replies up to the one with this id.
  [[nodiscard]] std::variant<std::vector<Reply>, LinkFailure> awaitReply(std::int64_t id,
                                                                         Duration patience) {
    std::unique_lock lock(mutex_);
    std::size_t seen = 0;
    const auto hasCome = [&] {
      while (seen < unread_.size() && unread_[seen].id != id) ++seen;
      return seen < unread_.size();
    };
    changed_.wait_for(lock, patience, [&] { return hasCome() || failure_; });
    if (!hasCome()) return failure_.value_or(LinkFailure{LinkFailure::Kind::noAnswer, ""});
    const auto end = unread_.begin() + static_cast<std::ptrdiff_t>(seen) + 1;
    std::vector<Reply> replies(std::move_iterator(unread_.begin()), std::move_iterator(end));
    unread_.erase(unread_.begin(), end);
    if (unread_.empty()) unreadSize_ = 0;
    return replies;
  }

  void divert(Receiver receiver, EndListener onEnd) {
    const std::lock_guard lock(mutex_);
    receiver_ = std::move(receiver);
    onEnd_ = std::move(onEnd);
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isWaiting_ = false;
  bool isAccepted_ = false;
  Welcome welcome_;
  std::optional<LinkFailure> failure_;
  std::vector<Reply> unread_;
  std::size_t unreadSize_ = 0;
  Receiver receiver_;
  EndListener onEnd_;
};

HelperSession::HelperSession(PeerNetwork& network, const DeviceIdentity& identity, Duration timeout,
                             std::int64_t firstId)
    : network_(network), identity_(identity), requests_(identity, firstId), timeout_(timeout) {}

HelperSession::~HelperSession() {
  if (connection_) connection_->close();
}

std::variant<Welcome, LinkFailure> HelperSession::invite(
    const ConnectionSettings& settings, Duration approval,
    const std::function<void(const Welcome&)>& onWaiting) {
  if (connection_) connection_->close();
  mailbox_ = std::make_shared<Mailbox>();
  connection_ = network_.connect(settings, identity_, mailbox_);
  if (!mailbox_->awaitQuickAnswer()) onWaiting(mailbox_->welcome());
  return mailbox_->awaitAccepted(approval);
}

std::optional<LinkFailure> HelperSession::authenticate() {
  const auto challenge = requests_.makeChallengeRequest();
  send(challenge.frame);
  const auto answer = mailbox_->awaitReply(challenge.id, timeout_);
  if (const auto* failure = std::get_if<LinkFailure>(&answer)) return *failure;
  if (requests_.acceptChallenge(std::get<std::vector<Reply>>(answer).back())) return std::nullopt;
  return LinkFailure{LinkFailure::Kind::misbehaviour, "it gave no challenge"};
}

std::variant<Reply, LinkFailure> HelperSession::request(const Request& request, Duration patience) {
  const auto outgoing = requests_.sign(request);
  if (!outgoing) return LinkFailure{LinkFailure::Kind::misbehaviour, "the request is not UTF-8"};
  send(outgoing->frame);
  auto answer = mailbox_->awaitReply(outgoing->id, std::max(timeout_, patience));
  if (const auto* failure = std::get_if<LinkFailure>(&answer)) return *failure;
  return std::move(std::get<std::vector<Reply>>(answer).back());
}

void HelperSession::send(const Bytes& frame) {
  connection_->send(frame);
}

std::variant<std::vector<Reply>, LinkFailure> HelperSession::repliesUntil(std::int64_t id) {
  return mailbox_->awaitReply(id, timeout_);
}

void HelperSession::divert(Receiver receiver, EndListener onEnd) {
  mailbox_->divert(std::move(receiver), std::move(onEnd));
}

}  // namespace torvane::ipad
