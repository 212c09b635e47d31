#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "torvane_ipad/console.h"
#include "torvane_ipad/helper_address.h"
#include "torvane_ipad/helper_session.h"
#include "torvane_ipad/known_helpers.h"

namespace torvane::ipad {

// What becomes of a helper whose certificate is not remembered: it is trusted by pairing alone.
enum class Strangers { refused, trusted };

// The way from the command line to a session: this device's key, the helper that is meant, the
// certificate that it must show. Failures are reported on the console.
class HelperReach {
 public:
  // Null when the key, the helper or the list of known helpers is missing; `exit` says why.
  [[nodiscard]] static std::unique_ptr<HelperReach> prepare(
      const Options& options, const Console& console, Exit& exit,
      Strangers strangers = Strangers::refused);

  // Device 0 is the one of the key file, the others are derived from it.
  struct Device {
    std::uint32_t number = 0;
    std::int64_t firstId = 1;
  };

  // A session that the helper has accepted; null after a failure.
  [[nodiscard]] std::unique_ptr<HelperSession> invite(const Device& device, Exit& exit);
  // One that also has its challenge.
  [[nodiscard]] std::unique_ptr<HelperSession> open(const Device& device, Exit& exit);

  // Reports the failure.
  Exit fail(LinkFailure failure) const;

  [[nodiscard]] const HelperAddress& helper() const { return helper_; }
  [[nodiscard]] const Welcome& welcome() const { return welcome_; }
  // Whether the helper is trusted since the last invite().
  [[nodiscard]] bool isNewlyTrusted() const { return isNewlyTrusted_; }
  [[nodiscard]] PeerNetwork& network() { return network_; }

 private:
  HelperReach(const Options& options, const Console& console, const DeviceIdentity& identity,
              KnownHelpers known, HelperAddress helper, Strangers strangers)
      : options_(options),
        console_(console),
        identity_(identity),
        known_(std::move(known)),
        helper_(std::move(helper)),
        strangers_(strangers) {}

  [[nodiscard]] ConnectionSettings settings(const Device& device) const;
  [[nodiscard]] std::optional<std::vector<std::string>> trusted() const;
  void remember(const Welcome& welcome);

  const Options& options_;
  const Console& console_;
  DeviceIdentity identity_;
  KnownHelpers known_;
  HelperAddress helper_;
  Strangers strangers_;
  bool isNewlyTrusted_ = false;
  Welcome welcome_;
  PeerNetwork network_;
};

// "iPad of" and this computer's name, at most 63 bytes.
[[nodiscard]] std::string defaultDisplayName();

// `name`, with the number behind it when it is not 0; at most 63 bytes.
[[nodiscard]] std::string numberedName(const std::string& name, std::uint32_t number);

}  // namespace torvane::ipad
