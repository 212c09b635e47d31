#pragma once

#include <boost/beast/core/string.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
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
  result.host = viewOf(request[http::field::host]);
  result.origin = viewOf(request[http::field::origin]);
  result.originCount = request.count(http::field::origin);
  result.isUpgrade = boost::beast::websocket::is_upgrade(request);
  const auto offered = request.equal_range(http::field::sec_websocket_protocol);
  for (auto field = offered.first; field != offered.second; ++field) {
    http::token_list tokens(field->value());
    if (tokens.exists({kLinkSubprotocol.data(), kLinkSubprotocol.size()})) {
      result.offersSubprotocol = true;
    }
  }
  return result;
}

}  // namespace torvane
