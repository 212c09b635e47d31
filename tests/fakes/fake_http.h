#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fakes/simulated_time.h"
#include "ports/http_session.h"

namespace torvane {

// How a scripted server treats one request.
struct FakeAnswer {
  HttpResult result;
  double delay = 0;  // seconds until the completion is called
};

[[nodiscard]] inline HttpResult httpResult(int status, std::string_view body = "",
                                           std::optional<std::string> contentType = {}) {
  return {HttpResponse{status, std::move(contentType)}, toBytes(body), std::nullopt};
}

[[nodiscard]] inline HttpResult httpError(std::string text) {
  return {std::nullopt, {}, std::move(text)};
}

// Every session talks to one scripted server. Completions come off the main thread.
class FakeHttpSessions final : public HttpSessions {
 public:
  explicit FakeHttpSessions(SimulatedTime& time) : shared_(time, *this), time_(time) {}

  // Chooses the answer; the default is an engine that is not there. A request that takes longer
  // than its idle time-out fails as a real one would.
  std::function<FakeAnswer(const HttpRequest&)> server;
  std::vector<HttpRequest> requests;
  // Writes a body to a new file; false when it cannot.
  std::function<bool(const std::string& path, ByteView body)> save;
  bool keepsRequests = true;              // to be switched off where a test lets hours pass
  std::vector<double> ephemeralTimeouts;  // of each session made

  [[nodiscard]] std::vector<HttpRequest> requestsTo(const std::string& path) const {
    std::vector<HttpRequest> found;
    for (const auto& request : requests) {
      if (request.url == "http://127.0.0.1:8484" + path) found.push_back(request);
    }
    return found;
  }

  HttpSession& shared() override { return shared_; }
  [[nodiscard]] std::unique_ptr<HttpSession> makeEphemeral(double idleTimeout) override {
    ephemeralTimeouts.push_back(idleTimeout);
    return std::make_unique<FakeHttpSession>(time_, *this);
  }

 private:
  class FakeHttpSession final : public HttpSession {
   public:
    FakeHttpSession(SimulatedTime& time, FakeHttpSessions& owner) : time_(time), owner_(owner) {}
    void dataTask(HttpRequest request, HttpCompletion completion) override {
      if (owner_.keepsRequests) owner_.requests.push_back(request);
      FakeAnswer answer = owner_.server ? owner_.server(request)
                                        : FakeAnswer{httpError("Could not connect to the server.")};
      if (answer.delay > request.idleTimeout) {
        answer = {httpError("The request timed out."), request.idleTimeout};
      }
      time_.scheduleBackground(
          answer.delay, [this, request = std::move(request), completion = std::move(completion),
                         result = std::move(answer.result)]() mutable {
            if (request.saveTo && !result.error) result = saved(request, std::move(result));
            completion(result);
          });
    }

   private:
    HttpResult saved(const HttpRequest& request, HttpResult result) {
      if (result.body.size() > request.maxResponseBytes) return httpError("It is too long.");
      if (!owner_.save || !owner_.save(*request.saveTo, result.body)) {
        return httpError("It could not be written.");
      }
      result.body.clear();
      return result;
    }

    SimulatedTime& time_;
    FakeHttpSessions& owner_;
  };

  FakeHttpSession shared_;
  SimulatedTime& time_;
};

}  // namespace torvane
