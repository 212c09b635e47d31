#include "peer/pairing_digits.h"

#include <algorithm>

#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::string_view kPrefix = "torvane-pairing-digits-2";
constexpr std::uint64_t kMillion = 1'000'000;
constexpr const char* kLeftToRightMark = "\u200E";

struct Range {
  char32_t first;
  char32_t last;
};

// Where Unicode has letters that are written from the right (Bidi_Class R and AL, also of what is
// not assigned yet).
constexpr std::array<Range, 5> kFromTheRight{
    {{0x0590, 0x08FF}, {0xFB1D, 0xFDFF}, {0xFE70, 0xFEFF}, {0x10800, 0x10FFF}, {0x1E800, 0x1EFFF}}};

bool isFromTheRight(std::string_view name) {
  while (const auto character = takeCharacter(name)) {
    const bool isHere = std::ranges::any_of(kFromTheRight, [&](const Range& range) {
      return *character >= range.first && *character <= range.last;
    });
    if (isHere) return true;
  }
  return false;
}

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

std::string nameWithDigits(const std::string& name, const std::string& digits) {
  return name + (isFromTheRight(name) ? kLeftToRightMark : "") + " · " + digits;
}

}  // namespace torvane
