#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "torvane_ipad/certificate_fingerprint.h"
#include "torvane_ipad/control_messages.h"
#include "torvane_ipad/peer_connection.h"

namespace torvane::ipad {

// The texts of one connection, from the helper's hello to its answer, as the device sees them: the
// proof of its key, and digits that only an honest helper can show as well.
class Handshake {
 public:
  // `helper` is the certificate that this connection showed.
  Handshake(DeviceIdentity identity, std::string displayName, const Fingerprint& helper);

  struct Send {
    std::string text;
  };
  struct Wait {};
  struct Begin {};  // with frames
  using Step = std::variant<Send, Wait, Begin, LinkFailure>;

  // What follows from the helper's next text.
  [[nodiscard]] Step received(std::string_view text);

  // As far as the helper has introduced itself.
  [[nodiscard]] const Welcome& welcome() const { return welcome_; }

 private:
  [[nodiscard]] Step invite(const Hello& hello);
  [[nodiscard]] Step wait(const LinkNonce& opening);

  DeviceIdentity identity_;
  std::string displayName_;
  Fingerprint helper_;
  bool hasInvited_ = false;
  Sha256Digest commitment_{};
  LinkNonce deviceNonce_{};
  Welcome welcome_;
};

}  // namespace torvane::ipad
