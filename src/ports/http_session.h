#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "protocol/bytes.h"

namespace torvane {

// Where a request may connect to, whatever its URL says.
struct HttpEndpoint {
  std::string address;  // numeric address
  std::uint16_t port = 0;

  bool operator==(const HttpEndpoint&) const = default;
};

struct HttpRequest {
  std::string url;
  std::string method = "GET";
  std::optional<std::string> contentType;  // sent as the Content-Type header when present
  Bytes body;                              // empty: no body at all

  double idleTimeout = 60;             // seconds without any progress, connecting included
  double totalTimeout = 0;             // seconds from start to end; 0: no such limit
  std::uint64_t maxResponseBytes = 0;  // a longer body is an error without a response; 0: no limit

  // Requests of one lane wait for one another rather than for those of other lanes: the lanes take
  // turns, and none has all of the session's connections. 0: no lane, first come, first served.
  std::uint64_t lane = 0;

  // When set, the response's body goes to a new file at this absolute path, for this user alone,
  // and none of it into the result. A file that is there already is an error; when the transfer
  // fails there is no file. What such a request's completion does for long holds up no other
  // request but those of its kind.
  std::optional<std::string> saveTo;

  // When set, the request connects to this endpoint or fails like an unreachable server, even
  // where the URL names another host or port; no redirect is followed and no proxy is asked.
  std::optional<HttpEndpoint> onlyEndpoint;
};

struct HttpResponse {
  int status = 0;
  std::optional<std::string> contentType;  // UTF-8; absent when the header is
};

struct HttpResult {
  std::optional<HttpResponse> response;  // absent when no complete header or too long a body came
  Bytes body;                            // empty when there is none or the transfer failed
  std::optional<std::string> error;      // UTF-8 description of a transport error
  bool diskIsFull = false;               // with an error: no room for what was to be saved
};

using HttpCompletion = std::function<void(HttpResult)>;

// A client with its own connections: HTTP/1.1, keep-alive, no cookies, no cache.
class HttpSession {
 public:
  virtual ~HttpSession() = default;

  // Starts the request and returns at once. `completion` is called exactly once, on a background
  // thread of the session's own, never inside this call. Main thread only.
  virtual void dataTask(HttpRequest request, HttpCompletion completion) = 0;
};

class HttpSessions {
 public:
  virtual ~HttpSessions() = default;

  // The session for the program's own small requests.
  virtual HttpSession& shared() = 0;

  // A session that keeps nothing on disk and gives up a request after `idleTimeout` seconds
  // without progress where the request does not say less.
  [[nodiscard]] virtual std::unique_ptr<HttpSession> makeEphemeral(double idleTimeout) = 0;
};

}  // namespace torvane
