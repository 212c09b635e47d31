#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "peer/own_hosts.h"

namespace torvane {

inline constexpr std::string_view kLinkTarget = "/link";

// Of the link, each with the subprotocol by which a device asks for it.
enum class LinkVersion { one = 1, two = 2 };
[[nodiscard]] std::string_view subprotocolOf(LinkVersion version);

// The parts of an HTTP request that decide its answer.
struct LinkRequest {
  std::string_view method;
  std::string_view target;
  std::string_view host;    // empty where there is not exactly one
  std::string_view origin;  // where `originCount` is 1
  std::size_t originCount = 0;
  bool isUpgrade = false;              // to a WebSocket
  std::optional<LinkVersion> version;  // the newest that is offered
};

struct LinkAnswer {
  unsigned status;  // 101: go on with the upgrade
  std::string_view body;
};

// A web page can open the link only where it was loaded from this computer under one of its own
// names. Programs that are no browsers send no "Origin", and may call this computer what they like.
[[nodiscard]] LinkAnswer answerTo(const LinkRequest& request, const OwnHosts& own);

}  // namespace torvane
