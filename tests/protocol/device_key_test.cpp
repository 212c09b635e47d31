#include "protocol/device_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "protocol/base64.h"
#include "protocol/json.h"
#include "support/signing_device.h"
#include "support/vectors.h"

namespace torvane {
namespace {

using test::fromHex;
using test::SigningDevice;

// Each line: secret key, public key, message, signature.
TEST(SigningPublicKey, AgreesWithTheTestsOfRfc8032) {
  int count = 0;
  for (const auto& line :
       test::linesOf(test::readSourceFile("tests/vectors/rfc8032_ed25519.txt"))) {
    if (line[0] == '#') continue;
    std::string secret, raw, message, signature;
    std::istringstream(line) >> secret >> raw >> message >> signature;
    std::array<std::uint8_t, 32> seed{};
    std::ranges::copy(fromHex(secret), seed.begin());
    const SigningDevice device{seed};
    Bytes bytes = fromHex(message);
    EXPECT_EQ(test::toHex(device.rawKey()), raw);
    EXPECT_EQ(test::toHex(device.sign(bytes)), signature);
    EXPECT_TRUE(device.publicKey().isValidSignature(fromHex(signature), bytes)) << raw;
    bytes.push_back(0);
    EXPECT_FALSE(device.publicKey().isValidSignature(fromHex(signature), bytes)) << raw;
    ++count;
  }
  EXPECT_EQ(count, 5);
}

TEST(SigningPublicKey, AgreesWithWycheproof) {
  const auto file = test::outsideVectors("wycheproof/ed25519_test.json");
  if (!file) GTEST_SKIP() << test::kNoOutsideVectors;
  const auto suite = parseJsonObject(test::readFile(*file));
  ASSERT_TRUE(suite);
  int count = 0;
  for (const auto& group : suite->at("testGroups").as_array()) {
    const auto raw = group.at("publicKey").at("pk").as_string();
    const auto key = SigningPublicKey::fromRaw(fromHex(raw));
    ASSERT_TRUE(key);
    for (const auto& test : group.at("tests").as_array()) {
      const bool valid = key->isValidSignature(fromHex(test.at("sig").as_string()),
                                               fromHex(test.at("msg").as_string()));
      EXPECT_EQ(valid, test.at("result").as_string() == "valid") << test;
      ++count;
    }
  }
  EXPECT_EQ(count, 151);
}

TEST(SigningPublicKey, RefusesOtherLengthsOfKey) {
  EXPECT_FALSE(SigningPublicKey::fromRaw({}));
  EXPECT_FALSE(SigningPublicKey::fromRaw(Bytes(31)));
  EXPECT_FALSE(SigningPublicKey::fromRaw(Bytes(33)));
  EXPECT_TRUE(SigningPublicKey::fromRaw(Bytes(32)));
}

TEST(SigningPublicKey, WritesTheDeviceKeyAsFortyFourCharacters) {
  const auto key = SigningPublicKey::fromRaw(Bytes(32, 0xFB));
  EXPECT_EQ(key->deviceKey(), "+/v7+/v7+/v7+/v7+/v7+/v7+/v7+/v7+/v7+/v7+/s=");
  EXPECT_EQ(key->deviceKey().size(), 44U);
}

TEST(SigningPublicKey, ReadsItsOwnDeviceKey) {
  const SigningDevice device{3};
  const auto key = SigningPublicKey::fromDeviceKey(device.deviceKey());
  ASSERT_TRUE(key);
  EXPECT_EQ(key->deviceKey(), device.deviceKey());
  EXPECT_TRUE(key->isValidSignature(device.sign(toBytes("text")), toBytes("text")));
}

TEST(SigningPublicKey, RefusesADeviceKeyThatIsNotOne) {
  const std::string deviceKey = SigningDevice{3}.deviceKey();
  EXPECT_FALSE(SigningPublicKey::fromDeviceKey(""));
  EXPECT_FALSE(SigningPublicKey::fromDeviceKey(deviceKey + "\n"));
  EXPECT_FALSE(SigningPublicKey::fromDeviceKey(deviceKey.substr(0, 43)));
  EXPECT_FALSE(SigningPublicKey::fromDeviceKey(deviceKey.substr(0, 40)));
  EXPECT_FALSE(SigningPublicKey::fromDeviceKey(deviceKey + deviceKey));
}

// A key of small order makes some signatures valid for many messages.
TEST(SigningPublicKey, RefusesTheZeroKeyAndThoseOfSmallOrder) {
  const Bytes zeroSignature(64);
  Bytes identitySignature(64);
  identitySignature[0] = 1;  // R is the neutral point, S is 0
  for (const char* raw : {"0000000000000000000000000000000000000000000000000000000000000000",
                          "0100000000000000000000000000000000000000000000000000000000000000",
                          "ecffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                          "26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc05"}) {
    const auto key = SigningPublicKey::fromRaw(fromHex(raw));
    for (int message = 0; message < 16; ++message) {
      const Bytes text(1, static_cast<std::uint8_t>(message));
      EXPECT_FALSE(key->isValidSignature(zeroSignature, text)) << raw;
      EXPECT_FALSE(key->isValidSignature(identitySignature, text)) << raw;
    }
  }
}

}  // namespace
}  // namespace torvane
