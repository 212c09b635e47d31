#include "peer/pairing_digits.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "peer/link_proof.h"

namespace torvane {
namespace {

PairingExchange example() {
  PairingExchange exchange{Bytes(32, 1), {}, {}, {}};
  exchange.certificate.fill(2);
  exchange.computerNonce.fill(3);
  exchange.deviceNonce.fill(4);
  return exchange;
}

LinkNonce numbered(std::uint64_t number) {
  LinkNonce nonce{};
  std::memcpy(nonce.data(), &number, sizeof number);
  return nonce;
}

TEST(PairingDigits, AreSixInTwoGroups) {
  for (std::uint64_t i = 0; i < 2000; ++i) {
    auto exchange = example();
    exchange.deviceNonce = numbered(i);
    const std::string digits = pairingDigits(exchange);
    ASSERT_EQ(digits.size(), 7U);
    ASSERT_EQ(digits[3], ' ');
    ASSERT_EQ(digits.find_first_not_of("0123456789 "), digits.npos);
  }
}

// SHA-256 over prefix, key, certificate and nonces, as Python's hashlib computes it.
TEST(PairingDigits, AreThoseThatTheDocumentDefines) {
  EXPECT_EQ(pairingDigits(example()), "681 486");
  LinkNonce nonce{};
  nonce.fill(3);
  EXPECT_EQ(pairingCommitment(nonce)[0], 0x64);
}

TEST(PairingDigits, DependOnKeyCertificateAndBothNonces) {
  std::set<std::string> digits{pairingDigits(example())};
  auto exchange = example();
  exchange.deviceKey[0] ^= 1U;
  digits.insert(pairingDigits(exchange));
  exchange = example();
  exchange.certificate[31] ^= 1U;
  digits.insert(pairingDigits(exchange));
  exchange = example();
  exchange.computerNonce[0] ^= 1U;
  digits.insert(pairingDigits(exchange));
  exchange = example();
  exchange.deviceNonce[31] ^= 1U;
  digits.insert(pairingDigits(exchange));
  EXPECT_EQ(digits.size(), 5U);
}

// Somebody in the middle who passes every nonce on as it is, but has to show his certificate to the
// device and his key to the computer.
TEST(PairingDigits, DifferOnTheTwoSidesOfARelay) {
  auto seenByDevice = example();
  seenByDevice.certificate.fill(0x66);
  auto seenByComputer = example();
  seenByComputer.deviceKey.assign(32, 0x66);
  EXPECT_NE(pairingDigits(seenByDevice), pairingDigits(seenByComputer));
}

// The relay knows what the computer shows, and everything of the device's side but the nonce that
// is his own to choose: about a million tries give him the same digits. (His certificate below is
// one for which it takes fewer.)
LinkNonce groundNonce(PairingExchange seenByDevice, const std::string& wanted) {
  for (std::uint64_t tried = 0;; ++tried) {
    seenByDevice.computerNonce = numbered(tried);
    if (pairingDigits(seenByDevice) == wanted) return seenByDevice.computerNonce;
  }
}

TEST(PairingDigits, CouldBeGroundOutWithoutTheCommitment) {
  auto seenByDevice = example();
  seenByDevice.certificate.fill(121);
  const std::string wanted = pairingDigits(example());
  const LinkNonce ground = groundNonce(seenByDevice, wanted);
  seenByDevice.computerNonce = ground;
  EXPECT_EQ(pairingDigits(seenByDevice), wanted);

  // He had to commit himself before he learned the device's nonce, and this does not open it.
  const Sha256Digest committed = pairingCommitment(numbered(0));
  EXPECT_NE(pairingCommitment(ground), committed);
  EXPECT_EQ(pairingCommitment(numbered(0)), committed);
}

TEST(PairingDigits, StandBehindTheName) {
  EXPECT_EQ(nameWithDigits("iPad", "482 913"), "iPad · 482 913");
  EXPECT_EQ(nameWithDigits("Zoë 日本語 😀", "482 913"), "Zoë 日本語 😀 · 482 913");
}

// Without the mark a screen shows "913 482" behind a Hebrew name.
TEST(PairingDigits, KeepTheirOrderBehindANameFromTheRight) {
  for (const std::string name : {"האייפד של דנה", "آيباد", "iPad של Ada", "𞤀𞤣"}) {
    EXPECT_EQ(nameWithDigits(name, "482 913"), name + "\u200E · 482 913");
  }
}

TEST(LinkProof, OfVersion2CoversAllThatIsKnown) {
  LinkNonce nonce{};
  nonce.fill(1);
  CertificateHash certificate{};
  certificate.fill(2);
  PairingOffer offer;
  offer.commitment.fill(3);
  offer.deviceNonce.fill(4);
  Bytes expected = toBytes("torvane-peer-link-2");
  for (const std::uint8_t part : Bytes{1, 2, 3, 4}) expected.insert(expected.end(), 32, part);
  EXPECT_EQ(proofMessage(nonce, certificate, offer), expected);
  EXPECT_EQ(asText(proofMessage(nonce, certificate)).substr(0, 19), "torvane-peer-link-1");
}

}  // namespace
}  // namespace torvane
