// The worked example of docs/peer-link.md, computed again: each value must stand there.

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <numeric>
#include <sstream>

#include "platform/linux/peer_link_invitation.h"
#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/p2p_authentication.h"
#include "protocol/p2p_frame.h"
#include "support/folders.h"
#include "support/link_client.h"
#include "support/websocket_frame.h"

namespace torvane {
namespace {

using testing::clientFrame;
using testing::DeviceKeyPair;

constexpr std::array<std::uint8_t, 32> kSecret{
    0x9d, 0x61, 0xb1, 0x9d, 0xef, 0xfd, 0x5a, 0x60, 0xba, 0x84, 0x4a, 0xf4, 0x92, 0xec, 0x2c, 0xc4,
    0x44, 0x49, 0xc5, 0x69, 0x7b, 0x32, 0x69, 0x19, 0x70, 0x3b, 0xac, 0x03, 0x1c, 0xae, 0x7f, 0x60};
constexpr std::array<std::uint8_t, 4> kMask{0x37, 0xfa, 0x21, 0x3d};
constexpr const char* kChallenge = "5D0C1E52-6F4B-4E0C-9F5B-3A1D2C7E8B90";

class PeerLinkExample : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ifstream file(sourceFolder() / "docs/peer-link.md");
    std::stringstream content;
    content << file.rdbuf();
    document = content.str();
    ASSERT_FALSE(document.empty());
    std::iota(greeting.nonce.begin(), greeting.nonce.end(), std::uint8_t{0});
    std::iota(opening.begin(), opening.end(), std::uint8_t{0x40});
    std::iota(deviceNonce.begin(), deviceNonce.end(), std::uint8_t{0x60});
    greeting.pairingNonce = opening;
    std::iota(certificate.begin(), certificate.end(), std::uint8_t{0xA0});
  }

  // Sixteen bytes a line, between fences.
  void expectBlock(ByteView bytes) const {
    std::ostringstream block;
    block << "```\n" << std::hex << std::setfill('0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const bool endsLine = i % 16 == 15 || i + 1 == bytes.size();
      block << std::setw(2) << int{bytes[i]} << (endsLine ? "\n" : " ");
    }
    block << "```\n";
    EXPECT_NE(document.find(block.str()), std::string::npos) << block.str();
  }

  void expectText(const std::string& text) const {
    EXPECT_NE(document.find(text), std::string::npos) << text;
  }

  [[nodiscard]] std::string invitation() const {
    return R"({"type":"invite","name":"Ada's iPad","context":")" + base64Encode(key.publicKey()) +
           R"(","nonce":")" + base64Encode(deviceNonce) + R"(","signature":")" +
           base64Encode(key.sign(proofMessage(greeting.nonce, certificate, offer()))) + "\"}";
  }

  [[nodiscard]] PairingOffer offer() const { return {pairingCommitment(opening), deviceNonce}; }

  std::string document;
  const DeviceKeyPair key{kSecret};
  LinkGreeting greeting;
  LinkNonce opening{};
  LinkNonce deviceNonce{};
  CertificateHash certificate{};
};

TEST_F(PeerLinkExample, ShowsKeyNoncesCommitmentAndCertificate) {
  expectBlock(key.publicKey());
  expectText("in base64 `" + base64Encode(key.publicKey()) + "`");
  expectBlock(greeting.nonce);
  expectBlock(certificate);
  expectBlock(opening);
  expectBlock(pairingCommitment(opening));
  expectBlock(deviceNonce);
}

TEST_F(PeerLinkExample, ShowsTheHello) {
  expectText("```json\n" + helloMessage("Desk", greeting) + "\n```\n");
}

TEST_F(PeerLinkExample, ShowsTheProof) {
  const Bytes message = proofMessage(greeting.nonce, certificate, offer());
  expectText("these 147 bytes");
  ASSERT_EQ(message.size(), 147U);
  expectBlock(message);
  expectText("`" + base64Encode(key.sign(message)) + "`");
}

TEST_F(PeerLinkExample, ShowsTheOpeningAndTheDigits) {
  expectText("```json\n" + waitingMessage(greeting) + "\n```\n");
  Bytes hashed = toBytes("torvane-pairing-digits-2");
  for (const Bytes& part :
       {key.publicKey(), Bytes(certificate.begin(), certificate.end()),
        Bytes(opening.begin(), opening.end()), Bytes(deviceNonce.begin(), deviceNonce.end())}) {
    hashed.insert(hashed.end(), part.begin(), part.end());
  }
  expectText("these 152 bytes");
  ASSERT_EQ(hashed.size(), 152U);
  expectBlock(hashed);
  Sha256 hash;
  hash.add(hashed);
  expectBlock(hash.digest());
  expectText("and show **" + pairingDigits({key.publicKey(), certificate, opening, deviceNonce}) +
             "**");
}

TEST_F(PeerLinkExample, ShowsHowVersion1Differs) {
  expectText("```json\n" + helloMessage("Desk", {greeting.nonce, {}}) + "\n```\n");
  const Bytes message = proofMessage(greeting.nonce, certificate);
  ASSERT_EQ(message.size(), 83U);
  expectText("`" + base64Encode(key.sign(message)) + "`");
}

TEST_F(PeerLinkExample, ShowsAnInvitationThatTheServerTakes) {
  expectText("```json\n" + invitation() + "\n```\n");
  expectText("which are " + std::to_string(invitation().size()) + " bytes");
  expectBlock(clientFrame(0x81, asBytes(invitation()), kMask));
  const auto result = readInvitation(invitation());
  const auto* valid = std::get_if<PeerInvitation>(&result);
  ASSERT_NE(valid, nullptr);
  EXPECT_EQ(valid->name, "Ada's iPad");
  EXPECT_TRUE(isProven(*valid, greeting, certificate));
}

TEST_F(PeerLinkExample, ShowsTheRequestForTheChallenge) {
  const auto frame = P2PFrame::encode({{"id", 1}, {"path", "/p2p/auth"}}, {});
  ASSERT_TRUE(frame);
  expectText("In all, " + std::to_string(frame->size()) + " bytes");
  expectBlock(*frame);
  expectBlock(clientFrame(0x82, *frame, kMask));
}

TEST_F(PeerLinkExample, ShowsASignedRequestThatTheProgramTakes) {
  const auto inner = P2PFrame::encode({{"id", 2}, {"path", "/p2p/bridge-info"}}, {});
  ASSERT_TRUE(inner);
  expectText(kChallenge);
  expectBlock(*inner);
  Bytes message = toBytes(kChallenge);
  message.insert(message.end(), inner->begin(), inner->end());
  const std::string signature = base64Encode(key.sign(message));
  expectText("`" + signature + "`");
  const auto envelope = P2PFrame::encode({{"signature", signature}}, *inner);
  ASSERT_TRUE(envelope);
  expectText("\n" + std::to_string(envelope->size()) + " bytes:\n");
  expectBlock(*envelope);
  ReceivedIDs ids;
  const auto publicKey = SigningPublicKey::fromRaw(key.publicKey());
  ASSERT_TRUE(publicKey);
  EXPECT_TRUE(P2PAuthentication::verify(*envelope, *publicKey, kChallenge, ids));
}

}  // namespace
}  // namespace torvane
