#pragma once

#include <curl/curl.h>

#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "peer/round_robin.h"
#include "platform/linux/curl_transfer.h"
#include "ports/http_session.h"

namespace torvane {

// Runs its requests with libcurl on a thread of its own, at most 32 at once and 8 of one lane; the
// rest wait their turn, and their time is already running. Destruction completes what is left with
// an error. Not to be destroyed inside a completion.
class CurlHttpSession final : public HttpSession {
 public:
  // `idleTimeout` (seconds) is for requests that give none.
  explicit CurlHttpSession(double idleTimeout);
  ~CurlHttpSession() override;
  CurlHttpSession(const CurlHttpSession&) = delete;
  CurlHttpSession& operator=(const CurlHttpSession&) = delete;

  void dataTask(HttpRequest request, HttpCompletion completion) override;

 private:
  using Clock = HttpJob::Clock;
  using TransferList = std::vector<std::unique_ptr<CurlTransfer>>;

  void run();
  bool takeInbox();  // false: the session ends
  void startWaiting();
  [[nodiscard]] bool mayStart(std::uint64_t lane) const;
  void start(HttpJob job);
  void completeFinished();
  void completeOverdue();
  void completeAll();
  void complete(std::size_t index, HttpResult result);  // of active_
  void waitForEvents();
  std::unique_ptr<CurlTransfer> spareTransfer();

  const double idleTimeout_;
  CURLM* const multi_;

  std::mutex mutex_;
  std::vector<HttpJob> inbox_;
  bool ending_ = false;

  // The thread's own.
  RoundRobin<HttpJob> waiting_;
  std::map<std::uint64_t, std::size_t> running_;  // by lane, as far as there are any
  TransferList active_;
  TransferList spare_;
  Clock::time_point nextDeadline_ = Clock::time_point::max();  // none is due before

  std::thread thread_;  // last: it uses the members above
};

class CurlHttpSessions final : public HttpSessions {
 public:
  CurlHttpSessions();

  HttpSession& shared() override { return *shared_; }
  [[nodiscard]] std::unique_ptr<HttpSession> makeEphemeral(double idleTimeout) override;

 private:
  std::unique_ptr<HttpSession> shared_;
};

}  // namespace torvane
