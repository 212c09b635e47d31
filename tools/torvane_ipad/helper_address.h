#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvane::ipad {

inline constexpr std::uint16_t kUsualPort = 48484;

// Where a helper is and what is known about it before it was asked.
struct HelperAddress {
  std::string host;  // as the user and the list of known helpers name it
  std::uint16_t port = kUsualPort;
  std::string address;      // what to connect to, when it differs from `host`
  std::string name;         // as announced; empty: unknown
  std::string fingerprint;  // of the certificate, from a source that can be trusted

  [[nodiscard]] std::string text() const;  // host:port
  [[nodiscard]] const std::string& target() const { return address.empty() ? host : address; }
};

// Reads host:port, with IPv6 addresses in brackets.
[[nodiscard]] std::optional<HelperAddress> parseAddress(std::string_view text);

// What a helper of this user says about itself in its runtime file.
[[nodiscard]] std::optional<HelperAddress> parseRuntimeFile(std::string_view json);

// The helper that runs on this computer for this user; none when there is none.
[[nodiscard]] std::optional<HelperAddress> localHelper();

}  // namespace torvane::ipad
