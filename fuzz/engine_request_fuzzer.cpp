// A verified request on its way to the engine: nothing in it may lead anywhere else or add to the
// request. The input is an inner frame's header, a zero byte and its body.

#include <algorithm>
#include <boost/url/parse.hpp>

#include "bridge/engine_request.h"
#include "engine/engine_requests.h"
#include "framed.h"
#include "protocol/constants.h"
#include "require.h"

using namespace torvane;
using fuzz::require;

namespace {

bool isVisible(char c) {
  return c > 0x20 && c < 0x7F;
}

void checkForwarded(const HttpRequest& sent, const PeerRequest& asked) {
  require(sent.onlyEndpoint == HttpEndpoint{"127.0.0.1", PORT}, "only the engine is reached");
  require(sent.url == "http://127.0.0.1:8484" + asked.path, "the path is passed on as it is");
  require(std::ranges::all_of(sent.url, isVisible), "a URL has no blank, control or other byte");
  require(boost::urls::parse_uri(sent.url).has_value(), "a URL can be parsed");
  require(!sent.method.empty() && std::ranges::all_of(sent.method, isVisible),
          "a method is one word");
  require(sent.body == asked.body, "the body is passed on as it is");
  require(!sent.contentType || !sent.body.empty(), "only a body has a type");
  require(!sent.contentType ||
              std::ranges::none_of(*sent.contentType,
                                   [](char c) { return c == '\r' || c == '\n' || c == '\0'; }),
          "a header is one line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto frame = P2PFrame::decode(fuzz::framed(asText({data, size})));
  if (!frame) return 0;
  const auto request = readPeerRequest(std::move(*frame));
  if (!request || !isValidURL(engineURL(request->path)) || wireProblem(*request)) return 0;
  checkForwarded(forwardedRequest(*request), *request);
  return 0;
}
