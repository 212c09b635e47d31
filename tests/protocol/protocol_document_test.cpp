// docs/protocol.md works one session through; here its bytes are held against the code.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numeric>

#include "bridge/engine_request.h"
#include "bridge/replies.h"
#include "protocol/base64.h"
#include "protocol/p2p_authentication.h"
#include "support/signing_device.h"
#include "support/vectors.h"

namespace torvane {
namespace {

using test::frameOf;
using test::SigningDevice;

constexpr std::string_view kChallenge = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";

// The text of the block of the document that a comment gives this name.
std::string example(const std::string& name) {
  const std::string page = test::readSourceFile("docs/protocol.md");
  const auto marker = page.find("<!-- example: " + name + " -->\n```text\n");
  if (marker == std::string::npos) return "no example of this name";
  const auto start = page.find("```text\n", marker) + 8;
  return page.substr(start, page.find("\n```", start) - start);
}

// The bytes of such a block: hexadecimal digits up to a bar, the same as text behind it.
Bytes exampleBytes(const std::string& name) {
  std::string digits;
  for (const auto& line : test::linesOf(example(name))) digits += line.substr(0, line.find('|'));
  return test::fromHex(digits);
}

SigningDevice exampleDevice() {
  std::array<std::uint8_t, SigningDevice::kSeedSize> seed;
  std::iota(seed.begin(), seed.end(), std::uint8_t{0});
  return SigningDevice{seed};
}

Bytes exampleRequest() {
  return frameOf(
      {{"id", 2}, {"path", "/api/goto"}, {"method", "POST"}, {"contentType", "application/json"}},
      toBytes(R"({"slide":3})"));
}

std::string headerText(const std::optional<Bytes>& frame) {
  return serializeJson(P2PFrame::decode(frame.value())->header).value();
}

TEST(ProtocolDocument, ShowsTheKey) {
  EXPECT_EQ(exampleBytes("public key"), exampleDevice().rawKey());
  EXPECT_EQ(example("device key"), exampleDevice().deviceKey());
}

TEST(ProtocolDocument, ShowsTheChallengeRequestAndItsReply) {
  EXPECT_EQ(exampleBytes("challenge request"), test::challengeRequest(1));
  EXPECT_EQ(exampleBytes("challenge reply"), localReply(1, {{"challenge", kChallenge}}));
}

TEST(ProtocolDocument, ShowsTheInnerFrameAndItsSignature) {
  EXPECT_EQ(exampleBytes("inner frame"), exampleRequest());
  Bytes message = toBytes(kChallenge);
  const Bytes inner = exampleRequest();
  message.insert(message.end(), inner.begin(), inner.end());
  EXPECT_EQ(example("signature"), base64Encode(exampleDevice().sign(message)));
}

TEST(ProtocolDocument, ShowsAnEnvelopeThatIsAcceptedOnce) {
  const Bytes envelope = exampleBytes("envelope");
  EXPECT_EQ(envelope, exampleDevice().envelopeAround(kChallenge, exampleRequest()));
  ReceivedIDs receivedIDs;
  const auto key = exampleDevice().publicKey();
  const auto request = P2PAuthentication::verify(envelope, key, kChallenge, receivedIDs);
  ASSERT_TRUE(request);
  EXPECT_EQ(stringMember(request->header, "path"), "/api/goto");
  EXPECT_EQ(asText(request->body), R"({"slide":3})");
  EXPECT_FALSE(P2PAuthentication::verify(envelope, key, kChallenge, receivedIDs));
}

TEST(ProtocolDocument, ShowsTheHeadersOfReplies) {
  const HttpResult done{HttpResponse{200, "application/json"}, {}, {}};
  const HttpResult unreachable{
      {}, {}, "Failed to connect to 127.0.0.1 port 8484 after 0 ms: Couldn't connect to server."};
  EXPECT_EQ(example("reply header"), headerText(engineReply(2, done)));
  EXPECT_EQ(example("reply header without an engine"), headerText(engineReply(2, unreachable)));
}

TEST(ProtocolDocument, NamesTheTimeLimitsOfTheEngine) {
  const HttpRequest request = forwardedRequest({});
  const auto seconds = [](double value) { return std::to_string(std::lround(value)) + " seconds"; };
  const std::string page = test::readSourceFile("docs/protocol.md");
  EXPECT_NE(page.find("gives up after " + seconds(request.idleTimeout) +
                      " in which nothing moves, and after " + seconds(request.totalTimeout)),
            std::string::npos);
}

}  // namespace
}  // namespace torvane
