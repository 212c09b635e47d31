#include "platform/linux/peer_link_invitation.h"

#include <gtest/gtest.h>
#include <sodium.h>

#include "protocol/base64.h"
#include "protocol/json.h"

namespace torvane {
namespace {

LinkRefusal refusalOf(std::string_view message) {
  const auto result = readInvitation(message);
  const auto* refusal = std::get_if<LinkRefusal>(&result);
  EXPECT_NE(refusal, nullptr) << message;
  return refusal != nullptr ? *refusal : LinkRefusal::declined;
}

struct Signer {
  Signer() { crypto_sign_keypair(publicKey.data(), secret.data()); }

  [[nodiscard]] PeerInvitation invitation(const LinkNonce& nonce, const CertificateHash& hash,
                                          const std::optional<PairingOffer>& offer = {}) const {
    const Bytes message = proofMessage(nonce, hash, offer);
    Bytes signature(crypto_sign_BYTES);
    crypto_sign_detached(signature.data(), nullptr, message.data(), message.size(), secret.data());
    return {"iPad", publicKey, signature, offer ? std::optional(offer->deviceNonce) : std::nullopt};
  }

  Bytes publicKey = Bytes(crypto_sign_PUBLICKEYBYTES);
  Bytes secret = Bytes(crypto_sign_SECRETKEYBYTES);
};

TEST(PeerLinkInvitation, ReadsNameContextAndSignature) {
  const auto result = readInvitation(
      R"({"type":"invite","name":"Ada","context":"AAEC","signature":"/w==","later":[1]})");
  const auto* invitation = std::get_if<PeerInvitation>(&result);
  ASSERT_NE(invitation, nullptr);
  EXPECT_EQ(invitation->name, "Ada");
  EXPECT_EQ(invitation->context, (Bytes{0, 1, 2}));
  EXPECT_EQ(invitation->signature, Bytes{0xFF});
  EXPECT_FALSE(invitation->nonce);
}

TEST(PeerLinkInvitation, ReadsANonceOf32Bytes) {
  const auto nonceIn = [](const std::string& text) {
    const auto result = readInvitation(R"({"type":"invite","name":"Ada","nonce":)" + text + "}");
    return std::get<PeerInvitation>(result).nonce;
  };
  EXPECT_EQ(nonceIn('"' + std::string(43, 'A') + "=\""), LinkNonce{});
  for (const char* other : {"\"AAEC\"", "7", "\"?\"", "null"})
    EXPECT_FALSE(nonceIn(other)) << other;
}

TEST(PeerLinkInvitation, NeedsNoContext) {
  const auto result = readInvitation(R"({"type":"invite","name":"Old iPad"})");
  const auto* invitation = std::get_if<PeerInvitation>(&result);
  ASSERT_NE(invitation, nullptr);
  EXPECT_FALSE(invitation->context);
  EXPECT_TRUE(isProven(*invitation, {}, {}));
}

TEST(PeerLinkInvitation, RefusesWhatIsNoInvitation) {
  for (const std::string_view message :
       {"", "{", "[]", "{}", R"({"type":"hello","name":"Ada"})", R"({"type":"invite"})",
        R"({"type":"invite","name":3})", R"({"type":"invite","name":"Ada","context":7})",
        R"({"type":"invite","name":"Ada","context":"not base64!"})",
        R"({"type":"invite","name":"Ada","signature":"AAEC"})",
        R"({"type":"invite","name":"Ada","context":"AAEC","signature":null})",
        R"({"type":"invite","name":"Ada"} {})"}) {
    EXPECT_EQ(refusalOf(message), LinkRefusal::protocol) << message;
  }
}

TEST(PeerLinkInvitation, RefusesABadNameBeforeAllElse) {
  EXPECT_EQ(refusalOf(R"({"type":"invite","name":"","context":7})"), LinkRefusal::name);
  EXPECT_EQ(refusalOf("{\"type\":\"invite\",\"name\":\"a\\nb\"}"), LinkRefusal::name);
}

TEST(PeerLinkInvitation, ProofCoversPrefixNonceAndCertificate) {
  LinkNonce nonce{};
  nonce.fill(1);
  CertificateHash hash{};
  hash.fill(2);
  Bytes expected = toBytes("torvane-peer-link-1");
  ASSERT_EQ(expected.size(), 19U);
  expected.insert(expected.end(), 32, 1);
  expected.insert(expected.end(), 32, 2);
  EXPECT_EQ(proofMessage(nonce, hash), expected);
}

TEST(PeerLinkInvitation, ProofHoldsForOneNonceAndOneCertificate) {
  const Signer signer;
  const LinkNonce nonce{1};
  const CertificateHash hash{2};
  const auto invitation = signer.invitation(nonce, hash);
  EXPECT_TRUE(isProven(invitation, {nonce}, hash));
  EXPECT_FALSE(isProven(invitation, {LinkNonce{9}}, hash));
  EXPECT_FALSE(isProven(invitation, {nonce}, CertificateHash{9}));
}

TEST(PeerLinkInvitation, ProofOfVersion2HoldsForItsNoncesAlone) {
  const Signer signer;
  const CertificateHash hash{2};
  const LinkGreeting greeting{LinkNonce{1}, LinkNonce{3}};
  const PairingOffer offer{pairingCommitment(LinkNonce{3}), LinkNonce{4}};
  const auto invitation = signer.invitation(greeting.nonce, hash, offer);
  EXPECT_TRUE(isProven(invitation, greeting, hash));
  EXPECT_FALSE(isProven(invitation, {greeting.nonce, LinkNonce{9}}, hash));
  EXPECT_FALSE(isProven(invitation, {LinkNonce{9}, LinkNonce{3}}, hash));
  EXPECT_FALSE(isProven(invitation, greeting, CertificateHash{9}));
  auto altered = invitation;
  altered.nonce = LinkNonce{9};
  EXPECT_FALSE(isProven(altered, greeting, hash));
  altered.nonce.reset();
  EXPECT_FALSE(isProven(altered, greeting, hash));
}

// Else somebody in between could have a connection without digits from a device that knows them.
TEST(PeerLinkInvitation, ProofOfOneVersionIsNoneInTheOther) {
  const Signer signer;
  const LinkGreeting first{LinkNonce{1}, {}};
  const LinkGreeting second{LinkNonce{1}, LinkNonce{3}};
  const PairingOffer offer{pairingCommitment(LinkNonce{3}), LinkNonce{4}};
  auto invitation = signer.invitation(first.nonce, {});
  EXPECT_TRUE(isProven(invitation, first, {}));
  invitation.nonce = LinkNonce{4};
  EXPECT_FALSE(isProven(invitation, second, {}));
  invitation = signer.invitation(second.nonce, {}, offer);
  EXPECT_TRUE(isProven(invitation, second, {}));
  EXPECT_FALSE(isProven(invitation, first, {}));
}

TEST(PeerLinkInvitation, HasDigitsInVersion2Alone) {
  const LinkGreeting greeting{LinkNonce{1}, LinkNonce{3}};
  const PeerInvitation invitation{"iPad", Bytes(32, 7), Bytes(64), LinkNonce{4}};
  const CertificateHash hash{2};
  EXPECT_EQ(digitsOf(invitation, greeting, hash),
            pairingDigits({Bytes(32, 7), hash, LinkNonce{3}, LinkNonce{4}}));
  EXPECT_FALSE(digitsOf(invitation, {greeting.nonce, {}}, hash));
  EXPECT_FALSE(digitsOf({"iPad", {}, {}, LinkNonce{4}}, greeting, hash));
}

TEST(PeerLinkInvitation, EveryGreetingIsNew) {
  const auto one = newGreeting(LinkVersion::two);
  const auto other = newGreeting(LinkVersion::two);
  ASSERT_TRUE(one.pairingNonce && other.pairingNonce);
  EXPECT_NE(one.nonce, other.nonce);
  EXPECT_NE(one.pairingNonce, other.pairingNonce);
  EXPECT_NE(one.nonce, *one.pairingNonce);
  EXPECT_FALSE(newGreeting(LinkVersion::one).pairingNonce);
}

TEST(PeerLinkInvitation, NameCannotBringDigitsAlong) {
  const auto result = readInvitation(R"({"type":"invite","name":"Ada's iPad · 482 913"})");
  const auto* invitation = std::get_if<PeerInvitation>(&result);
  ASSERT_NE(invitation, nullptr);
  EXPECT_EQ(invitation->name, "Ada's iPad · ### ###");
}

TEST(PeerLinkInvitation, ProofNeedsTheContextsOwnKey) {
  auto invitation = Signer().invitation({}, {});
  invitation.context = Signer().publicKey;
  EXPECT_FALSE(isProven(invitation, {}, {}));
  invitation.context->pop_back();
  EXPECT_FALSE(isProven(invitation, {}, {}));
  invitation = Signer().invitation({}, {});
  invitation.signature.reset();
  EXPECT_FALSE(isProven(invitation, {}, {}));
}

TEST(PeerLinkInvitation, WritesTheControlMessages) {
  EXPECT_EQ(waitingMessage({}), R"({"type":"waiting"})");
  EXPECT_EQ(waitingMessage({{}, LinkNonce{}}),
            R"({"type":"waiting","opening":")" + std::string(43, 'A') + R"(="})");
  EXPECT_EQ(acceptedMessage(), R"({"type":"accepted"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::declined), R"({"type":"refused","reason":"declined"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::proof), R"({"type":"refused","reason":"proof"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::name), R"({"type":"refused","reason":"name"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::busy), R"({"type":"refused","reason":"busy"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::protocol), R"({"type":"refused","reason":"protocol"})");
  EXPECT_EQ(helloMessage("Desk", {}), R"({"type":"hello","version":1,"name":"Desk","nonce":")" +
                                          std::string(43, 'A') + R"(="})");
  EXPECT_EQ(helloMessage("Desk", {{}, LinkNonce{}}),
            R"({"type":"hello","version":2,"name":"Desk","nonce":")" + std::string(43, 'A') +
                R"(=","commitment":"Zmh6rfhivXdsj8GLjp+OIAiXFIVu4jOzkCpZHQ1fKSU="})");
}

}  // namespace
}  // namespace torvane
