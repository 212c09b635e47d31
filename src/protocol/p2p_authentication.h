#pragma once

#include <optional>
#include <string_view>

#include "protocol/bytes.h"
#include "protocol/device_key.h"
#include "protocol/p2p_frame.h"
#include "protocol/received_ids.h"

namespace torvane::P2PAuthentication {

// Checks a signed request: an envelope frame whose header holds the base64 text of an Ed25519
// signature under "signature" and whose body is a complete inner frame. The signed message is the
// challenge's UTF-8 bytes followed by that body as received. Gives the inner frame, or none when
// any check fails. An inner frame's "id" is used up as soon as its signature is valid; one that
// was used before is a replay.
[[nodiscard]] std::optional<P2PFrame::Frame> verify(ByteView envelope, const SigningPublicKey& key,
                                                    std::string_view challenge,
                                                    ReceivedIDs& receivedIDs);

// The same for an envelope that has been decoded already.
[[nodiscard]] std::optional<P2PFrame::Frame> verify(const P2PFrame::View& envelope,
                                                    const SigningPublicKey& key,
                                                    std::string_view challenge,
                                                    ReceivedIDs& receivedIDs);

}  // namespace torvane::P2PAuthentication
