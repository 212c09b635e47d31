// Any bytes as a received frame: what is read can be written and read again.

#include <algorithm>

#include "protocol/p2p_frame.h"
#include "require.h"

using namespace torvane;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView message(data, size);
  const auto frame = P2PFrame::decode(message);
  const auto view = P2PFrame::decodeView(message);
  require(frame.has_value() == view.has_value(), "both ways to decode agree");
  if (!frame) return 0;
  require(frame->header == view->header && std::ranges::equal(frame->body, view->body),
          "both ways to decode read the same");

  const auto written = P2PFrame::encode(frame->header, frame->body);
  require(written.has_value(), "what was read can be written");
  const auto again = P2PFrame::decode(*written);
  require(again.has_value(), "what was written can be read");
  require(again->header == frame->header && again->body == frame->body, "and reads the same");
  require(P2PFrame::encode(again->header, again->body) == written, "and is written the same");
  return 0;
}
