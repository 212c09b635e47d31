#include "protocol/p2p_authentication.h"

#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "support/signing_device.h"

namespace torvane {
namespace {

using test::frameOf;
using test::SigningDevice;

constexpr std::string_view kChallenge = "6F1C3B0E-7F43-4C2A-9D57-0B8E2A64C19D";
constexpr std::string_view kLaterChallenge = "0D9A51B7-2E68-4F10-8C3D-5A7B94E6F021";

// One connection of one device.
class P2PAuthenticationTest : public testing::Test {
 protected:
  std::optional<P2PFrame::Frame> verify(ByteView envelope) {
    return P2PAuthentication::verify(envelope, device.publicKey(), kChallenge, receivedIDs);
  }

  // An envelope with the header value `signature` around `inner`.
  static Bytes sealed(const JsonValue& signature, ByteView inner) {
    return frameOf({{"signature", signature}}, inner);
  }

  [[nodiscard]] std::string signatureOf(std::string_view challenge, ByteView inner) const {
    Bytes message = toBytes(challenge);
    message.insert(message.end(), inner.begin(), inner.end());
    return base64Encode(device.sign(message));
  }

  const SigningDevice device{1};
  const Bytes request = frameOf({{"id", 5}, {"path", "/api/state"}}, toBytes("body"));
  ReceivedIDs receivedIDs;
};

TEST_F(P2PAuthenticationTest, AcceptsASignedRequest) {
  const auto inner = verify(device.envelopeAround(kChallenge, request));
  ASSERT_TRUE(inner);
  EXPECT_EQ(integerMember(inner->header, "id"), 5);
  EXPECT_EQ(stringMember(inner->header, "path"), "/api/state");
  EXPECT_EQ(asText(inner->body), "body");
  EXPECT_TRUE(receivedIDs.contains(5));
}

TEST_F(P2PAuthenticationTest, RefusesASignatureWithoutTheChallenge) {
  EXPECT_FALSE(verify(device.envelopeAround("", request)));
  EXPECT_TRUE(receivedIDs.empty());
}

TEST_F(P2PAuthenticationTest, RefusesTheSameEnvelopeASecondTime) {
  const Bytes envelope = device.envelopeAround(kChallenge, request);
  EXPECT_TRUE(verify(envelope));
  EXPECT_FALSE(verify(envelope));
}

TEST_F(P2PAuthenticationTest, RefusesAnEnvelopeOfAnEarlierConnection) {
  const Bytes envelope = device.envelopeAround(kChallenge, request);
  ReceivedIDs none;
  EXPECT_FALSE(P2PAuthentication::verify(envelope, device.publicKey(), kLaterChallenge, none));
  EXPECT_TRUE(none.empty());
}

TEST_F(P2PAuthenticationTest, RefusesASignatureTextWithALineBreak) {
  const std::string signature = signatureOf(kChallenge, request);
  ASSERT_TRUE(verify(sealed(JsonValue(signature), request)));
  receivedIDs = {};
  for (const char* space : {"\n", "\r\n", " "}) {
    for (const std::size_t at : {std::size_t{0}, std::size_t{64}, signature.size()}) {
      std::string broken = signature;
      EXPECT_FALSE(verify(sealed(JsonValue(broken.insert(at, space)), request))) << at;
    }
  }
}

TEST_F(P2PAuthenticationTest, RefusesAnIdThatIsAStringOfDigits) {
  EXPECT_FALSE(verify(device.envelope(kChallenge, {{"id", "5"}, {"path", "/"}})));
  EXPECT_TRUE(receivedIDs.empty());
}

TEST_F(P2PAuthenticationTest, RefusesASignedBodyThatIsNotAFrame) {
  EXPECT_FALSE(verify(device.envelopeAround(kChallenge, toBytes("no frame"))));
  EXPECT_FALSE(verify(device.envelopeAround(kChallenge, {})));
  EXPECT_FALSE(
      verify(device.envelopeAround(kChallenge, toBytes(std::string_view("\0\0\0\2[]", 6)))));
  EXPECT_TRUE(receivedIDs.empty());
}

TEST_F(P2PAuthenticationTest, RefusesAnEnvelopeThatIsNotAFrame) {
  Bytes envelope = device.envelopeAround(kChallenge, request);
  envelope[3] = 0xFF;
  EXPECT_FALSE(verify(envelope));
  EXPECT_FALSE(verify({}));
}

TEST_F(P2PAuthenticationTest, RefusesAMissingSignature) {
  EXPECT_FALSE(verify(frameOf({}, request)));
  EXPECT_FALSE(verify(request));
}

TEST_F(P2PAuthenticationTest, RefusesASignatureThatIsNotAString) {
  for (const JsonValue& value : {JsonValue(1), JsonValue(true), JsonValue(nullptr),
                                 JsonValue(JsonArray{signatureOf(kChallenge, request)})}) {
    EXPECT_FALSE(verify(sealed(value, request)));
  }
}

TEST_F(P2PAuthenticationTest, RefusesASignatureOfAnotherLength) {
  Bytes signature = base64Decode(signatureOf(kChallenge, request)).value();
  signature.push_back(0);
  EXPECT_FALSE(verify(sealed(JsonValue(base64Encode(signature)), request)));
  signature.resize(63);
  EXPECT_FALSE(verify(sealed(JsonValue(base64Encode(signature)), request)));
  EXPECT_FALSE(verify(sealed(JsonValue(""), request)));
}

TEST_F(P2PAuthenticationTest, RefusesAnotherDevicesSignature) {
  EXPECT_FALSE(verify(SigningDevice{2}.envelopeAround(kChallenge, request)));
}

TEST_F(P2PAuthenticationTest, RefusesEveryFlippedBit) {
  const Bytes envelope = device.envelopeAround(kChallenge, request);
  for (std::size_t at = 0; at < envelope.size(); ++at) {
    for (unsigned bit = 1; bit <= 128; bit *= 2) {
      Bytes changed = envelope;
      changed[at] = static_cast<std::uint8_t>(changed[at] ^ bit);
      EXPECT_FALSE(verify(changed)) << at;
    }
  }
  EXPECT_TRUE(verify(envelope));
}

TEST_F(P2PAuthenticationTest, RefusesARequestWithBytesAddedOrTakenAway) {
  Bytes envelope = device.envelopeAround(kChallenge, request);
  envelope.push_back(0);
  EXPECT_FALSE(verify(envelope));
  envelope.resize(envelope.size() - 2);
  EXPECT_FALSE(verify(envelope));
}

TEST_F(P2PAuthenticationTest, PassesOverOtherKeysOfTheEnvelope) {
  const JsonObject header{{"signature", signatureOf(kChallenge, request)}, {"id", "x"}, {"a", 1}};
  EXPECT_TRUE(verify(frameOf(header, request)));
}

TEST_F(P2PAuthenticationTest, UsesUpTheIdOfARequestThatHasNoPath) {
  EXPECT_TRUE(verify(device.envelope(kChallenge, {{"id", 9}})));
  EXPECT_FALSE(verify(device.envelope(kChallenge, {{"id", 9}, {"path", "/"}})));
}

TEST_F(P2PAuthenticationTest, AcceptsIdsInAnyOrder) {
  constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();
  constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
  for (const std::int64_t id : {std::int64_t{7}, std::int64_t{3}, std::int64_t{-1}, std::int64_t{0},
                                kLargest, kSmallest, std::int64_t{8}}) {
    EXPECT_TRUE(verify(device.envelope(kChallenge, {{"id", id}}))) << id;
    EXPECT_FALSE(verify(device.envelope(kChallenge, {{"id", id}, {"again", true}}))) << id;
  }
}

TEST_F(P2PAuthenticationTest, RefusesIdsThatAreNoIntegers) {
  for (const JsonValue& id : {JsonValue(1.5), JsonValue(true), JsonValue(nullptr), JsonValue(1e19),
                              JsonValue(9223372036854775808U)}) {
    EXPECT_FALSE(verify(device.envelope(kChallenge, {{"id", id}})));
  }
  EXPECT_TRUE(receivedIDs.empty());
}

TEST_F(P2PAuthenticationTest, TakesAWholeDecimalAsTheSameId) {
  EXPECT_TRUE(verify(device.envelope(kChallenge, {{"id", 4.0}})));
  EXPECT_FALSE(verify(device.envelope(kChallenge, {{"id", 4}})));
}

TEST_F(P2PAuthenticationTest, LeavesTheIdsOfARefusedRequestFree) {
  EXPECT_FALSE(verify(SigningDevice{2}.envelopeAround(kChallenge, request)));
  EXPECT_TRUE(verify(device.envelopeAround(kChallenge, request)));
}

}  // namespace
}  // namespace torvane
