#pragma once

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/curl_address.h"
#include "platform/posix/body_file.h"
#include "ports/http_session.h"

namespace torvane {

inline constexpr const char* kCannotSave = "The response could not be written to a file.";
inline constexpr const char* kConnectionLost = "The connection was lost before an answer came.";

// A request with what its session has to remember of it.
struct HttpJob {
  using Clock = std::chrono::steady_clock;

  HttpRequest request;
  HttpCompletion completion;
  Clock::time_point lastProgress{};
  Clock::duration idleTimeout{};
  Clock::time_point lastMoment{};  // when the total time is over

  [[nodiscard]] Clock::time_point deadline() const {
    return std::min(lastProgress + idleTimeout, lastMoment);
  }
};

// One request at a time, on a libcurl handle that is used again for the next. Lives on the
// session's thread.
class CurlTransfer {
 public:
  CurlTransfer();
  ~CurlTransfer();
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  // Sets the handle up for the job. A text when its request must not be sent.
  [[nodiscard]] std::optional<std::string> prepare(HttpJob job);

  [[nodiscard]] CURL* handle() const { return handle_; }
  [[nodiscard]] const HttpJob& job() const { return job_; }

  // What came of the job: libcurl ended with `code`, or it failed for a reason of our own.
  [[nodiscard]] HttpResult result(CURLcode code);
  [[nodiscard]] HttpResult failure(std::string error);

  // Drops the job and all it held, but for its address, which the next one may share.
  HttpCompletion release();

 private:
  struct Target {
    std::string url;
    std::optional<HttpEndpoint> onlyEndpoint;
  };

  // What a request without a body has the handle set to, but for its URL.
  struct Setup {
    std::string method;
    bool isBound = false, isSecure = false;  // to an endpoint

    bool operator==(const Setup&) const = default;
  };

  std::optional<std::string> aim();  // a text when the request must not go there
  void setUp();
  void setTarget();
  void setMessage();
  void setHeaders();
  void setCallbacks();

  void receiveHeader(std::string_view line);
  bool receiveBody(ByteView bytes);  // false: too long, or no place for it
  std::string cannotSave();          // right after it failed
  [[nodiscard]] HttpResult described() const;
  [[nodiscard]] bool endsWithHeader() const;  // its answer
  void noteProgress() { job_.lastProgress = HttpJob::Clock::now(); }

  // In curl_callbacks.cpp.
  static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* self);
  static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t uploaded);
  static int onRequest(void* self, char*, char*, int, int);
  static curl_socket_t onOpenSocket(void* self, curlsocktype, curl_sockaddr* address);

  CURL* handle_;
  std::optional<Setup> setup_;         // of the handle; none after a request with more than that
  curl_slist* bareHeaders_ = nullptr;  // for a body whose type nobody gave
  curl_slist* headers_ = nullptr;      // for this job
  std::array<char, CURL_ERROR_SIZE> errorText_{};

  HttpJob job_;
  Target target_;  // what url_ was made of
  CurlUrl url_;
  bool isSecure_ = false;
  Bytes body_;
  std::unique_ptr<BodyFile> file_;  // where the body goes instead
  std::uint64_t received_ = 0;      // bytes of the body
  curl_off_t uploaded_ = 0;
  long requestsSent_ = 0;
  bool hasHeader_ = false;
  bool diskIsFull_ = false;
  std::string problem_;  // set by a callback that ended the transfer
};

}  // namespace torvane
