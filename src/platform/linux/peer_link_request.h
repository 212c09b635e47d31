#pragma once

#include <algorithm>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream_base.hpp>
#include <string_view>

#include "platform/linux/peer_link_http.h"

namespace torvane {

inline std::string_view viewOf(boost::beast::string_view text) {
  return {text.data(), text.size()};
}

// What the link needs to know of a request, as views into it.
inline LinkRequest readLinkRequest(
    const boost::beast::http::request<boost::beast::http::empty_body>& request) {
  namespace http = boost::beast::http;
  LinkRequest result;
  result.method = viewOf(request.method_string());
  result.target = viewOf(request.target());
  if (request.count(http::field::host) == 1) result.host = viewOf(request[http::field::host]);
  result.origin = viewOf(request[http::field::origin]);
  result.originCount = request.count(http::field::origin);
  result.isUpgrade = boost::beast::websocket::is_upgrade(request);
  const auto offered = request.equal_range(http::field::sec_websocket_protocol);
  for (auto field = offered.first; field != offered.second; ++field) {
    http::token_list tokens(field->value());
    for (const LinkVersion version : {LinkVersion::one, LinkVersion::two}) {
      const std::string_view name = subprotocolOf(version);
      if (!tokens.exists({name.data(), name.size()})) continue;
      result.version = std::max(result.version.value_or(version), version);
    }
  }
  return result;
}

// Tells a device which version it speaks from now on, in the answer to its upgrade.
inline auto choosing(LinkVersion version) {
  namespace websocket = boost::beast::websocket;
  return websocket::stream_base::decorator([version](websocket::response_type& response) {
    const std::string_view name = subprotocolOf(version);
    response.set(boost::beast::http::field::sec_websocket_protocol,
                 boost::beast::string_view(name.data(), name.size()));
  });
}

}  // namespace torvane
