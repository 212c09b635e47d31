#include "torvane_ipad/device_identity.h"

#include <sodium.h>

#include <algorithm>

#include "protocol/base64.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

constexpr std::size_t kMostFileSize = 1024;
constexpr char kDerivation[crypto_kdf_CONTEXTBYTES + 1] = "tvdevice";

std::optional<DeviceIdentity::Seed> parseSeed(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  const auto bytes = base64Decode(text);
  if (!bytes || bytes->size() != DeviceIdentity::kSeedSize) return std::nullopt;
  DeviceIdentity::Seed seed{};
  std::ranges::copy(*bytes, seed.begin());
  return seed;
}

}  // namespace

DeviceIdentity::DeviceIdentity(const Seed& seed) : seed_(seed) {
  crypto_sign_seed_keypair(publicKey_.data(), secretKey_.data(), seed_.data());
}

DeviceIdentity DeviceIdentity::derived(std::uint64_t number) const {
  static_assert(kSeedSize == crypto_kdf_KEYBYTES);
  Seed seed{};
  crypto_kdf_derive_from_key(seed.data(), seed.size(), number, kDerivation, seed_.data());
  return DeviceIdentity(seed);
}

Bytes DeviceIdentity::sign(ByteView message) const {
  Bytes signature(crypto_sign_BYTES);
  crypto_sign_detached(signature.data(), nullptr, message.data(), message.size(),
                       secretKey_.data());
  return signature;
}

std::variant<DeviceIdentity, std::string> loadIdentity(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::exists(file, error)) {
    DeviceIdentity::Seed seed{};
    randombytes_buf(seed.data(), seed.size());
    // When another start was faster, its key is the one that counts.
    (void)createPrivateFile(file, base64Encode(seed) + "\n");
  }
  const auto text = readFile(file, kMostFileSize);
  if (!text) return "The key file " + file.string() + " cannot be read or made.";
  if (isOpenToOthers(file)) {
    return "The key file " + file.string() + " is open to other users. Run \"chmod 600 " +
           file.string() + "\".";
  }
  const auto seed = parseSeed(*text);
  if (!seed) {
    return "The key file " + file.string() +
           " holds no key. Remove it to get a new one; this device then has to be paired again.";
  }
  return DeviceIdentity(*seed);
}

}  // namespace torvane::ipad
