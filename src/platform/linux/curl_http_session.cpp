#include "platform/linux/curl_http_session.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <utility>

namespace torvane {
namespace {

constexpr double kSharedIdleTimeout = 60;
constexpr std::size_t kMostConnections = 32;
constexpr std::size_t kMostOfOneLane = 8;
constexpr double kLongestTimeout = 1e9;  // seconds; more would overflow the clock
constexpr int kLongestWait = 3'600'000;  // milliseconds

constexpr const char* kTimedOut = "The request timed out.";
constexpr const char* kCancelled = "The request was cancelled.";

HttpJob::Clock::duration clockDuration(double seconds) {
  const std::chrono::duration<double> bounded(std::min(seconds, kLongestTimeout));
  return std::chrono::duration_cast<HttpJob::Clock::duration>(bounded);
}

HttpResult errorResult(std::string error) {
  HttpResult result;
  result.error = std::move(error);
  return result;
}

CURLM* newMulti() {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);  // once, before use
  (void)initialised;
  CURLM* multi = curl_multi_init();
  curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(kMostConnections));
  return multi;
}

// A write to a connection that the peer has closed must not end the program: the TLS library uses
// plain writes.
void blockBrokenPipeSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

CurlHttpSession::CurlHttpSession(double idleTimeout)
    : idleTimeout_(idleTimeout > 0 ? idleTimeout : kSharedIdleTimeout), multi_(newMulti()) {
  thread_ = std::thread([this] { run(); });
}

CurlHttpSession::~CurlHttpSession() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  curl_multi_wakeup(multi_);
  thread_.join();
  spare_.clear();
  curl_multi_cleanup(multi_);
}

void CurlHttpSession::dataTask(HttpRequest request, HttpCompletion completion) {
  HttpJob job;
  const Clock::time_point now = Clock::now();
  job.lastProgress = now;
  job.idleTimeout = clockDuration(request.idleTimeout > 0 ? request.idleTimeout : idleTimeout_);
  job.lastMoment =
      now + clockDuration(request.totalTimeout > 0 ? request.totalTimeout : kLongestTimeout);
  job.request = std::move(request);
  job.completion = std::move(completion);
  bool wasEmpty = false;
  {
    const std::lock_guard lock(mutex_);
    wasEmpty = inbox_.empty();
    inbox_.push_back(std::move(job));
  }
  if (wasEmpty) curl_multi_wakeup(multi_);
}

void CurlHttpSession::run() {
  blockBrokenPipeSignal();
  while (takeInbox()) {
    startWaiting();
    int running = 0;
    curl_multi_perform(multi_, &running);
    completeFinished();
    completeOverdue();
    waitForEvents();
  }
  completeAll();
}

bool CurlHttpSession::takeInbox() {
  const std::lock_guard lock(mutex_);
  for (HttpJob& job : inbox_) {
    nextDeadline_ = std::min(nextDeadline_, job.deadline());
    const std::uint64_t lane = job.request.lane;
    waiting_.put(lane, std::move(job));
  }
  inbox_.clear();
  return !ending_;
}

void CurlHttpSession::startWaiting() {
  while (auto job = waiting_.take([this](std::uint64_t lane) { return mayStart(lane); })) {
    start(std::move(*job));
  }
}

bool CurlHttpSession::mayStart(std::uint64_t lane) const {
  if (active_.size() >= kMostConnections) return false;
  const auto known = running_.find(lane);
  return lane == 0 || known == running_.end() || known->second < kMostOfOneLane;
}

void CurlHttpSession::start(HttpJob job) {
  active_.push_back(spareTransfer());
  CurlTransfer& transfer = *active_.back();
  ++running_[job.request.lane];
  if (auto problem = transfer.prepare(std::move(job))) {
    complete(active_.size() - 1, transfer.failure(std::move(*problem)));
    return;
  }
  curl_multi_add_handle(multi_, transfer.handle());
}

std::unique_ptr<CurlTransfer> CurlHttpSession::spareTransfer() {
  if (spare_.empty()) return std::make_unique<CurlTransfer>();
  auto transfer = std::move(spare_.back());
  spare_.pop_back();
  return transfer;
}

void CurlHttpSession::completeFinished() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
    const CURL* handle = message->easy_handle;
    const CURLcode code = message->data.result;
    const auto found = std::find_if(active_.begin(), active_.end(),
                                    [&](const auto& each) { return each->handle() == handle; });
    complete(static_cast<std::size_t>(found - active_.begin()), (*found)->result(code));
  }
}

// A transfer's progress only moves its deadline away, so nothing needs a look before the earliest
// one that was ever noted.
void CurlHttpSession::completeOverdue() {
  const Clock::time_point now = Clock::now();
  if (now < nextDeadline_) return;
  nextDeadline_ = Clock::time_point::max();
  const auto isOverdue = [&](const HttpJob& job) {
    const Clock::time_point deadline = job.deadline();
    if (deadline > now) nextDeadline_ = std::min(nextDeadline_, deadline);
    return deadline <= now;
  };
  for (std::size_t i = active_.size(); i-- > 0;) {
    if (isOverdue(active_[i]->job())) complete(i, active_[i]->failure(kTimedOut));
  }
  for (const HttpJob& job : waiting_.takeAll(isOverdue)) job.completion(errorResult(kTimedOut));
}

void CurlHttpSession::completeAll() {
  while (!active_.empty()) complete(0, active_.front()->failure(kCancelled));
  for (const HttpJob& job : waiting_.takeAll([](const HttpJob&) { return true; })) {
    job.completion(errorResult(kCancelled));
  }
}

void CurlHttpSession::complete(std::size_t index, HttpResult result) {
  std::swap(active_[index], active_.back());
  std::unique_ptr<CurlTransfer> transfer = std::move(active_.back());
  active_.pop_back();
  curl_multi_remove_handle(multi_, transfer->handle());
  const auto lane = running_.find(transfer->job().request.lane);
  if (--lane->second == 0) running_.erase(lane);
  const HttpCompletion completion = transfer->release();
  spare_.push_back(std::move(transfer));
  completion(std::move(result));
}

void CurlHttpSession::waitForEvents() {
  if (waiting_.has([this](std::uint64_t lane) { return mayStart(lane); })) return;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextDeadline_ - Clock::now());
  const auto wait = std::clamp<std::int64_t>(left.count(), 0, kLongestWait);
  curl_multi_poll(multi_, nullptr, 0, static_cast<int>(wait), nullptr);
}

namespace {

// Requests that save to a file have a thread of their own.
class SharedHttpSession final : public HttpSession {
 public:
  void dataTask(HttpRequest request, HttpCompletion completion) override {
    if (!request.saveTo) {
      others_.dataTask(std::move(request), std::move(completion));
      return;
    }
    if (!saving_) saving_.emplace(kSharedIdleTimeout);
    saving_->dataTask(std::move(request), std::move(completion));
  }

 private:
  CurlHttpSession others_{kSharedIdleTimeout};
  std::optional<CurlHttpSession> saving_;
};

}  // namespace

CurlHttpSessions::CurlHttpSessions() : shared_(std::make_unique<SharedHttpSession>()) {}

std::unique_ptr<HttpSession> CurlHttpSessions::makeEphemeral(double idleTimeout) {
  return std::make_unique<CurlHttpSession>(idleTimeout);
}

}  // namespace torvane
