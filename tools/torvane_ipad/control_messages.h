#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "peer/link_proof.h"
#include "torvane_ipad/device_identity.h"

namespace torvane::ipad {

// The texts that are exchanged on the peer link before frames are.
inline constexpr std::size_t kMostControlSize = 4096;
inline constexpr std::int64_t kLinkVersion = 2;

struct Hello {
  std::int64_t version = 0;
  std::string name;
  LinkNonce nonce{};
  Sha256Digest commitment{};  // zero in another version
};
struct Waiting {
  LinkNonce opening{};  // of the hello's commitment
};
struct Accepted {};
struct Refused {
  std::string reason;
};
using ControlMessage = std::variant<Hello, Waiting, Accepted, Refused>;

// None for anything that a helper does not say.
[[nodiscard]] std::optional<ControlMessage> parseControl(std::string_view text);

// The answer to a hello, with the proof that this device holds its key, bound to the helper's
// certificate. None when the name is not UTF-8.
[[nodiscard]] std::optional<std::string> makeInvite(const DeviceIdentity& identity,
                                                    const std::string& name, const Hello& hello,
                                                    const LinkNonce& deviceNonce,
                                                    const CertificateHash& certificate);

}  // namespace torvane::ipad
