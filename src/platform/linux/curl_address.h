#pragma once

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>

#include "ports/http_session.h"

namespace torvane {

struct CurlUrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using CurlUrl = std::unique_ptr<CURLU, CurlUrlDeleter>;

struct ParsedUrl {
  CurlUrl url;  // null when the request must not be made
  bool isSecure = false;
  std::string problem;  // then: why, for the user
};

// The URL exactly as libcurl is going to follow it. With an endpoint, anything that names another
// host or port, even by a name that means the same, or that holds user information, is refused
// before a name is looked up or a socket is made.
[[nodiscard]] ParsedUrl parseUrl(const std::string& text,
                                 const std::optional<HttpEndpoint>& onlyEndpoint);

// Whether a socket address is the endpoint's.
[[nodiscard]] bool isEndpoint(const sockaddr& address, const HttpEndpoint& endpoint);

}  // namespace torvane
