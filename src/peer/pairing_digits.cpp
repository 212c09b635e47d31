#include "peer/pairing_digits.h"

namespace torvane {
namespace {

constexpr std::string_view kPrefix = "torvane-pairing-digits-2";
constexpr std::uint64_t kMillion = 1'000'000;

}  // namespace

Sha256Digest pairingCommitment(const LinkNonce& computerNonce) {
  Sha256 hash;
  hash.add(computerNonce);
  return hash.digest();
}

std::string pairingDigits(const PairingExchange& exchange) {
  Sha256 hash;
  hash.add(asBytes(kPrefix));
  hash.add(exchange.deviceKey);
  hash.add(exchange.certificate);
  hash.add(exchange.computerNonce);
  hash.add(exchange.deviceNonce);
  const Sha256Digest digest = hash.digest();
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < sizeof number; ++i) number = (number << 8U) | digest.at(i);
  std::string digits = std::to_string(number % kMillion + kMillion).substr(1);
  return digits.insert(3, " ");
}

}  // namespace torvane
