#include "torvane_ipad/load_run.h"

#include <algorithm>

namespace torvane::ipad {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTick = std::chrono::milliseconds(50);
// After the last answer, for answers that nobody waits for.
constexpr auto kAftermath = std::chrono::milliseconds(300);
// Requests that the greedy peer signs and sends in one turn of the thread, which takes the other
// peers' answers as well.
constexpr int kGreedyTurn = 16;

}  // namespace

LoadRequest makeLoadRequest(const LoadPlan& plan, std::size_t peer, std::uint64_t number) {
  const std::string mark = std::to_string(peer) + "-" + std::to_string(number);
  if (plan.echoSlides > 0) {
    // Peers are at different slides at the same time.
    const auto slide = static_cast<std::int64_t>(1 + (peer + number) % plan.echoSlides);
    const std::string path = "/api/slides/" + std::to_string(slide) + "/notes?load=" + mark;
    return {{.path = path}, {mark, slide}};
  }
  const char* separator = plan.path.find('?') == std::string::npos ? "?" : "&";
  return {{.path = plan.path + separator + "load=" + mark}, {mark, std::nullopt}};
}

std::int64_t firstLoadId(std::size_t peer) {
  return (static_cast<std::int64_t>(peer) << 40) + 1;
}

void LoadRun::start(std::vector<std::unique_ptr<HelperSession>>& sessions) {
  const std::size_t polite = sessions.size() - (plan_.greedy > 0 ? 1 : 0);
  for (std::size_t i = 0; i < sessions.size(); ++i) {
    const bool isGreedy = i == polite;
    const std::uint64_t share =
        polite > 0 ? plan_.requests / polite + (i < plan_.requests % polite ? 1 : 0) : 0;
    peers_.push_back({.session = sessions[i].get(),
                      .tally = {},
                      .quota = isGreedy ? plan_.greedy : share,
                      .isGreedy = isGreedy});
    sessions[i]->divert([self = shared_from_this(), i](Bytes frame) { self->received(i, frame); },
                        [self = shared_from_this(), i] { self->ended(i); });
  }
  network_.callAfter({}, [self = shared_from_this()] { self->begin(); });
}

void LoadRun::stop() {
  network_.callAfter({}, [self = shared_from_this()] { self->isStopping_ = true; });
}

void LoadRun::begin() {
  startedAt_ = lastAnswerAt_ = Clock::now();
  if (plan_.rate > 0) {
    const auto polite = std::ranges::count(peers_, false, &Peer::isGreedy);
    const double seconds = static_cast<double>(polite) / plan_.rate;
    interval_ = std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
  }
  for (std::size_t i = 0; i < peers_.size(); ++i) {
    // Peers take turns instead of sending all at once.
    peers_[i].lastAnswerAt = startedAt_;
    peers_[i].nextDue = startedAt_ + interval_ * static_cast<std::int64_t>(i) /
                                         static_cast<std::int64_t>(peers_.size());
    pump(i);
    if (peers_[i].isGreedy) pumpGreedily(i);
  }
  tick();
}

void LoadRun::pump(std::size_t index) {
  Peer& peer = peers_[index];
  if (peer.isGreedy) return;
  while (!isStopping_ && !peer.hasEnded && !hasSentAll(peer) &&
         peer.tally.inFlight() < plan_.inFlight) {
    const Time now = Clock::now();
    if (plan_.rate > 0 && waitsForItsTime(index, now)) return;
    sendOne(index, now);
  }
}

void LoadRun::pumpGreedily(std::size_t index) {
  Peer& peer = peers_[index];
  for (int i = 0; i < kGreedyTurn; ++i) {
    if (isStopping_ || peer.hasEnded || hasSentAll(peer)) return;
    sendOne(index, Clock::now());
  }
  network_.callAfter({}, [self = shared_from_this(), index] { self->pumpGreedily(index); });
}

bool LoadRun::waitsForItsTime(std::size_t index, Time now) {
  Peer& peer = peers_[index];
  if (peer.nextDue <= now) {
    peer.nextDue += interval_;
    return false;
  }
  if (!peer.isTimerSet) {
    peer.isTimerSet = true;
    network_.callAfter(peer.nextDue - now, [self = shared_from_this(), index] {
      self->peers_[index].isTimerSet = false;
      self->pump(index);
    });
  }
  return true;
}

void LoadRun::sendOne(std::size_t index, Time now) {
  Peer& peer = peers_[index];
  auto load = makeLoadRequest(plan_, index + 1, peer.tally.counts().sent + 1);
  const auto outgoing = peer.session->requests().sign(load.request);
  if (!outgoing) return ended(index);
  peer.tally.requestSent(outgoing->id, now, std::move(load.mark));
  peer.session->send(outgoing->frame);
}

void LoadRun::received(std::size_t index, const Bytes& frame) {
  lastAnswerAt_ = peers_[index].lastAnswerAt = Clock::now();
  peers_[index].tally.frameReceived(frame, lastAnswerAt_);
  pump(index);
}

void LoadRun::ended(std::size_t index) {
  peers_[index].hasEnded = true;
  peers_[index].tally.expire(Time::max());
}

void LoadRun::tick() {
  const Time now = Clock::now();
  if (plan_.time.count() > 0 && now - startedAt_ >= plan_.time) isStopping_ = true;
  for (std::size_t i = 0; i < peers_.size(); ++i) {
    expire(peers_[i], now);
    pump(i);
  }
  const bool isEndless = plan_.requests == 0 && plan_.time.count() == 0;
  if (isEndless && isDone(peers_.back())) isStopping_ = true;
  if (!isDone()) {
    quietSince_.reset();
  } else if (!quietSince_) {
    quietSince_ = now;
  } else if (now - *quietSince_ >= kAftermath) {
    return finish();
  }
  network_.callAfter(kTick, [self = shared_from_this()] { self->tick(); });
}

// The greedy peer's requests wait for one another: they are lost when no more answers come.
void LoadRun::expire(Peer& peer, Time now) const {
  if (peer.isGreedy && now - peer.lastAnswerAt < plan_.timeout) return;
  peer.tally.expire(peer.isGreedy ? now : now - plan_.timeout);
}

bool LoadRun::hasSentAll(const Peer& peer) {
  return peer.quota > 0 && peer.tally.counts().sent >= peer.quota;
}

bool LoadRun::isDone(const Peer& peer) const {
  return peer.hasEnded || (peer.tally.inFlight() == 0 && (isStopping_ || hasSentAll(peer)));
}

bool LoadRun::isDone() const {
  return std::ranges::all_of(peers_, [&](const Peer& peer) { return isDone(peer); });
}

void LoadRun::finish() {
  LoadResult result;
  result.time = lastAnswerAt_ - startedAt_;
  for (const Peer& peer : peers_) {
    (peer.isGreedy ? result.greedyCounts : result.counts) += peer.tally.counts();
    (peer.isGreedy ? result.greedyLatencies : result.latencies).add(peer.tally.latencies());
    result.endedPeers += peer.hasEnded ? 1 : 0;
    // The session must not hold on to this run.
    peer.session->divert({}, {});
  }
  result_.set_value(std::move(result));
}

}  // namespace torvane::ipad
