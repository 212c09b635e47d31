#pragma once

#include <string>
#include <string_view>

namespace torvane {

inline constexpr std::string_view kLinkTarget = "/link";
inline constexpr std::string_view kLinkSubprotocol = "torvane.link.1";

// The parts of an HTTP request that decide its answer.
struct LinkRequest {
  std::string_view method;
  std::string_view target;
  std::string_view host;
  std::string_view origin;  // where `originCount` is 1
  std::size_t originCount = 0;
  bool isUpgrade = false;  // to a WebSocket
  bool offersSubprotocol = false;
};

struct LinkAnswer {
  unsigned status;  // 101: go on with the upgrade
  std::string_view body;
};

// A web page of another origin cannot open the link; programs that are no browsers send no
// "Origin".
[[nodiscard]] LinkAnswer answerTo(const LinkRequest& request);

}  // namespace torvane
