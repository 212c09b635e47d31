#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ports/http_session.h"
#include "protocol/p2p_frame.h"

namespace torvane {

// What a verified request of an iPad asks of the engine.
struct PeerRequest {
  std::int64_t id = 0;
  std::string path = {};  // as sent, with any query
  std::string method = "GET";
  std::optional<std::string> contentType = {};
  Bytes body = {};
};

// None unless the header holds an integer "id" and a text "path".
[[nodiscard]] std::optional<PeerRequest> readPeerRequest(P2PFrame::Frame frame);

// Whether a text is a URI with an authority by the grammar of RFC 3986.
[[nodiscard]] bool isValidURL(std::string_view text);

// Why a request must not be put on the wire, for the "error" of a reply: its method is not a token
// (RFC 9110, section 5.6.2) or the content type of its body holds control characters. None when it
// may.
[[nodiscard]] std::optional<std::string> wireProblem(const PeerRequest& request);

// The iPad's request as it goes to the engine.
[[nodiscard]] HttpRequest forwardedRequest(PeerRequest request);

}  // namespace torvane
