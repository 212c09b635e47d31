#include "platform/linux/peer_link_http.h"

#include <algorithm>

namespace torvane {
namespace {

constexpr std::string_view kPage =
    "<!DOCTYPE html><html lang=\"en\"><head><meta charset=\"utf-8\">"
    "<title>Torvane P2P Helper</title></head><body><h1>Torvane P2P Helper</h1>"
    "<p>Through this address the Torvane app on an iPad runs the presentation on this computer. "
    "There is nothing to see here in a browser.</p></body></html>\n";
constexpr std::string_view kOriginScheme = "https://";

char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowered(x) == lowered(y); });
}

bool isForeign(const LinkRequest& request, const OwnHosts& own) {
  if (request.originCount == 0) return false;
  return request.originCount > 1 || !isOwnHost(request.host, own) ||
         !equalIgnoringCase(request.origin.substr(0, kOriginScheme.size()), kOriginScheme) ||
         !equalIgnoringCase(request.origin.substr(kOriginScheme.size()), request.host);
}

}  // namespace

std::string_view subprotocolOf(LinkVersion version) {
  return version == LinkVersion::two ? "torvane.link.2" : "torvane.link.1";
}

LinkAnswer answerTo(const LinkRequest& request, const OwnHosts& own) {
  if (request.method != "GET") return {405, "Only GET is answered here.\n"};
  if (request.isUpgrade) {
    if (request.target != kLinkTarget) return {404, "There is nothing at this address.\n"};
    if (isForeign(request, own)) return {403, "Other origins may not open the link.\n"};
    if (!request.version) return {400, "The subprotocol torvane.link.2 is needed.\n"};
    return {101, {}};
  }
  if (request.target == "/") return {200, kPage};
  return {404, "There is nothing at this address.\n"};
}

}  // namespace torvane
