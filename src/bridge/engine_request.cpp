#include "bridge/engine_request.h"

#include <algorithm>
#include <boost/url/parse.hpp>

#include "engine/engine_requests.h"

namespace torvane {
namespace {

constexpr double kForwardIdleTimeout = 60;
constexpr double kForwardTotalTimeout = 300;
constexpr std::uint64_t kForwardResponseLimit = std::uint64_t{256} << 20;

bool isTokenCharacter(char c) {
  constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
  const bool alphanumeric =
      (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return alphanumeric || kMarks.find(c) != std::string_view::npos;
}

// What a header's value may not hold: all of them but TAB (RFC 9110, section 5.5).
bool isForbiddenControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

// Empty where none is sent: without a body it says nothing, whatever it holds.
std::string_view sentContentType(const PeerRequest& request) {
  if (request.body.empty() || !request.contentType) return {};
  return *request.contentType;
}

}  // namespace

std::optional<PeerRequest> readPeerRequest(P2PFrame::Frame frame) {
  const auto id = integerMember(frame.header, "id");
  auto path = stringMember(frame.header, "path");
  if (!id || !path) return std::nullopt;
  return PeerRequest{*id, std::move(*path), stringMember(frame.header, "method").value_or("GET"),
                     stringMember(frame.header, "contentType"), std::move(frame.body)};
}

bool isValidURL(std::string_view text) {
  const auto url = boost::urls::parse_uri({text.data(), text.size()});
  // The library lets a path follow an authority without a slash between them; RFC 3986,
  // section 3.3, does not.
  return url && (url->encoded_path().empty() || url->encoded_path().front() == '/');
}

std::optional<std::string> wireProblem(const PeerRequest& request) {
  const auto& method = request.method;
  if (method.empty() || !std::all_of(method.begin(), method.end(), isTokenCharacter)) {
    return "The request's method is not an HTTP method.";
  }
  const auto type = sentContentType(request);
  if (std::any_of(type.begin(), type.end(), isForbiddenControl)) {
    return "The request's content type holds control characters.";
  }
  return std::nullopt;
}

HttpRequest forwardedRequest(PeerRequest request) {
  HttpRequest forwarded = engineRequest(request.path, kForwardIdleTimeout);
  forwarded.method = std::move(request.method);
  forwarded.totalTimeout = kForwardTotalTimeout;
  forwarded.maxResponseBytes = kForwardResponseLimit;
  if (!request.body.empty()) {
    forwarded.body = std::move(request.body);
    forwarded.contentType = std::move(request.contentType);
  }
  return forwarded;
}

}  // namespace torvane
