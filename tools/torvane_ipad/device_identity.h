#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "protocol/bytes.h"

namespace torvane::ipad {

// The Ed25519 key pair that makes this program a device of its own.
class DeviceIdentity {
 public:
  static constexpr std::size_t kSeedSize = 32;
  using Seed = std::array<std::uint8_t, kSeedSize>;

  explicit DeviceIdentity(const Seed& seed);

  // Another device, always the same one for the same number.
  [[nodiscard]] DeviceIdentity derived(std::uint64_t number) const;

  [[nodiscard]] ByteView publicKey() const { return publicKey_; }
  [[nodiscard]] Bytes sign(ByteView message) const;

 private:
  Seed seed_;
  std::array<std::uint8_t, 32> publicKey_{};
  std::array<std::uint8_t, 64> secretKey_{};
};

// The identity kept in `file`, made on first use; otherwise a sentence for the user.
[[nodiscard]] std::variant<DeviceIdentity, std::string> loadIdentity(
    const std::filesystem::path& file);

}  // namespace torvane::ipad
