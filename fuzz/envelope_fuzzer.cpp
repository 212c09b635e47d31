// Signed requests. The first byte of the input chooses what the rest is: an envelope, an envelope's
// header and body, an inner frame, or an inner frame's header and body. The last two are signed, so
// that what lies behind the signature is reached; then one bit is flipped, which the signature must
// not survive.

#include "framed.h"
#include "protocol/p2p_authentication.h"
#include "require.h"
#include "support/signing_device.h"

using namespace torvane;
using fuzz::require;

namespace {

constexpr std::string_view kChallenge = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";

const test::SigningDevice& device() {
  static const test::SigningDevice device{7};
  return device;
}

std::optional<P2PFrame::Frame> verify(ByteView envelope, ReceivedIDs& receivedIDs) {
  return P2PAuthentication::verify(envelope, device().publicKey(), kChallenge, receivedIDs);
}

void checkStranger(ByteView envelope) {
  ReceivedIDs receivedIDs;
  require(!verify(envelope, receivedIDs), "nobody signs without the key");
  require(receivedIDs.empty(), "a refused envelope uses up no id");
}

void checkOwner(std::uint8_t choice, ByteView inner) {
  Bytes envelope = device().envelopeAround(kChallenge, inner);
  const auto frame = P2PFrame::decode(inner);
  const auto id = frame ? integerMember(frame->header, "id") : std::nullopt;

  ReceivedIDs receivedIDs;
  const auto request = verify(envelope, receivedIDs);
  require(request.has_value() == id.has_value(), "a signed frame with an id is accepted");
  if (!request) return;
  require(request->header == frame->header && request->body == frame->body, "and read as it is");
  require(receivedIDs.contains(*id) && receivedIDs.runCount() == 1, "its id is used up");
  require(!verify(envelope, receivedIDs), "a replay is refused");

  auto& byte = envelope[(choice >> 5U) * envelope.size() / 8];
  byte = static_cast<std::uint8_t>(byte ^ 1U << (choice >> 2U & 7U));
  checkStranger(envelope);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const ByteView rest(data + 1, size - 1);
  switch (data[0] & 3U) {
    case 0:
      checkStranger(rest);
      break;
    case 1:
      checkStranger(fuzz::framed(asText(rest)));
      break;
    case 2:
      checkOwner(data[0], rest);
      break;
    default:
      checkOwner(data[0], fuzz::framed(asText(rest)));
  }
  return 0;
}
