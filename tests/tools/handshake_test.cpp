#include "torvane_ipad/handshake.h"

#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/json.h"

namespace torvane::ipad {
namespace {

LinkNonce filled(std::uint8_t value) {
  LinkNonce nonce{};
  nonce.fill(value);
  return nonce;
}

const LinkNonce kComputersNonce = filled(3);

std::string hello(const std::string& name = "Mini") {
  return *serializeJson({{"type", "hello"},
                         {"version", 2},
                         {"name", name},
                         {"nonce", base64Encode(filled(1))},
                         {"commitment", base64Encode(pairingCommitment(kComputersNonce))}});
}

std::string waiting(const LinkNonce& opening) {
  return *serializeJson({{"type", "waiting"}, {"opening", base64Encode(opening)}});
}

class HandshakeTest : public ::testing::Test {
 protected:
  // The invitation that answers a hello.
  JsonObject invite(const std::string& text = hello()) {
    const auto step = handshake_.received(text);
    const auto* invite = std::get_if<Handshake::Send>(&step);
    return invite != nullptr ? parseJsonObject(invite->text).value_or(JsonObject{}) : JsonObject{};
  }
  std::string failure(const std::string& text) {
    const auto step = handshake_.received(text);
    const auto* failed = std::get_if<LinkFailure>(&step);
    return failed != nullptr ? failed->detail : "no failure";
  }

  DeviceIdentity identity_{DeviceIdentity::Seed{1, 2, 3}};
  Handshake handshake_{identity_, "iPad", filled(2)};
};

TEST_F(HandshakeTest, ShowsTheDigitsOfBothNoncesOnceTheyAreKnown) {
  const JsonObject invitation = invite();
  EXPECT_EQ(stringMember(invitation, "name"), "iPad");
  EXPECT_EQ(handshake_.welcome().digits, "");
  ASSERT_TRUE(
      std::holds_alternative<Handshake::Wait>(handshake_.received(waiting(kComputersNonce))));
  const auto nonce = base64Decode(*stringMember(invitation, "nonce"));
  ASSERT_TRUE(nonce && nonce->size() == 32);
  PairingExchange exchange{
      *base64Decode(*stringMember(invitation, "context")), filled(2), kComputersNonce, {}};
  std::ranges::copy(*nonce, exchange.deviceNonce.begin());
  EXPECT_EQ(handshake_.welcome().digits, pairingDigits(exchange));
  EXPECT_TRUE(
      std::holds_alternative<Handshake::Begin>(handshake_.received(R"({"type":"accepted"})")));
}

TEST_F(HandshakeTest, HasANonceOfItsOwnEachTime) {
  Handshake other(identity_, "iPad", filled(2));
  const auto step = other.received(hello());
  const auto invitation = parseJsonObject(std::get<Handshake::Send>(step).text);
  EXPECT_NE(stringMember(*invitation, "nonce"), stringMember(invite(), "nonce"));
}

TEST_F(HandshakeTest, TakesNoOtherNonceThanTheOneCommittedTo) {
  invite();
  EXPECT_EQ(failure(waiting(filled(4))), "it did not open its commitment");
  EXPECT_EQ(handshake_.welcome().digits, "");
}

TEST_F(HandshakeTest, NeedsTheNonceBeforeTheAnswer) {
  invite();
  EXPECT_EQ(failure(R"({"type":"accepted"})"), "it did not open its commitment");
}

TEST_F(HandshakeTest, TakesTheNonceOnce) {
  invite();
  ASSERT_TRUE(
      std::holds_alternative<Handshake::Wait>(handshake_.received(waiting(kComputersNonce))));
  EXPECT_EQ(failure(waiting(kComputersNonce)), "it did not open its commitment");
}

// A relay would name himself so that the digits of the other end stand beside those of this one.
TEST_F(HandshakeTest, HelpersNameBringsNoDigitsAlong) {
  invite(hello("Desk · 482 913"));
  EXPECT_EQ(handshake_.welcome().helperName, "Desk · ### ###");
}

TEST_F(HandshakeTest, TakesNothingOutOfTurn) {
  EXPECT_EQ(failure(waiting(kComputersNonce)), "it said something unexpected");
  EXPECT_EQ(failure(R"({"type":"accepted"})"), "it said something unexpected");
  invite();
  EXPECT_EQ(failure(hello()), "it said something unexpected");
  EXPECT_EQ(failure(R"({"type":"waiting"})"), "it said something unexpected");
}

TEST_F(HandshakeTest, DoesNotGoBackToAnOlderVersion) {
  const std::string old = *serializeJson(
      {{"type", "hello"}, {"version", 1}, {"name", "Mini"}, {"nonce", base64Encode(filled(1))}});
  EXPECT_EQ(failure(old), "it speaks version 1 of the peer link");
}

TEST_F(HandshakeTest, TellsWhyItIsRefused) {
  invite();
  EXPECT_EQ(failure(R"({"type":"refused","reason":"declined"})"), "declined");
}

}  // namespace
}  // namespace torvane::ipad
