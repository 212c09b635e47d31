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

  [[nodiscard]] PeerInvitation invitation(const LinkNonce& nonce,
                                          const CertificateHash& hash) const {
    const Bytes message = proofMessage(nonce, hash);
    Bytes signature(crypto_sign_BYTES);
    crypto_sign_detached(signature.data(), nullptr, message.data(), message.size(), secret.data());
    return {"iPad", publicKey, signature};
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
  EXPECT_TRUE(isProven(invitation, nonce, hash));
  EXPECT_FALSE(isProven(invitation, LinkNonce{9}, hash));
  EXPECT_FALSE(isProven(invitation, nonce, CertificateHash{9}));
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
  EXPECT_EQ(waitingMessage(), R"({"type":"waiting"})");
  EXPECT_EQ(acceptedMessage(), R"({"type":"accepted"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::declined), R"({"type":"refused","reason":"declined"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::proof), R"({"type":"refused","reason":"proof"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::name), R"({"type":"refused","reason":"name"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::busy), R"({"type":"refused","reason":"busy"})");
  EXPECT_EQ(refusedMessage(LinkRefusal::protocol), R"({"type":"refused","reason":"protocol"})");
  EXPECT_EQ(helloMessage("Desk", {}), R"({"type":"hello","version":1,"name":"Desk","nonce":")" +
                                          std::string(43, 'A') + R"(="})");
}

}  // namespace
}  // namespace torvane
