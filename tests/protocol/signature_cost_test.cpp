// What a text in the place of a signature may cost before it is refused.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>

#include "protocol/p2p_authentication.h"
#include "support/signing_device.h"

namespace {

std::size_t charactersDecoded = 0;

}  // namespace

// In place of the library's, which it calls.
extern "C" int sodium_base642bin(unsigned char* bin, std::size_t binMaxLength, const char* text,
                                 std::size_t textLength, const char* ignore, std::size_t* binLength,
                                 const char** textEnd, int variant) {
  static const auto library =
      reinterpret_cast<decltype(&sodium_base642bin)>(dlsym(RTLD_NEXT, "sodium_base642bin"));
  charactersDecoded += textLength;
  return library(bin, binMaxLength, text, textLength, ignore, binLength, textEnd, variant);
}

namespace torvane {
namespace {

constexpr std::string_view kChallenge = "6F1C3B0E-7F43-4C2A-9D57-0B8E2A64C19D";

class SignatureCostTest : public testing::Test {
 protected:
  bool isAccepted(ByteView envelope) {
    charactersDecoded = 0;
    return P2PAuthentication::verify(envelope, device.publicKey(), kChallenge, ids).has_value();
  }

  const test::SigningDevice device{1};
  ReceivedIDs ids;
};

TEST_F(SignatureCostTest, ReadsTheTextOfARealOne) {
  EXPECT_TRUE(isAccepted(device.envelope(kChallenge, {{"id", 1}})));
  EXPECT_EQ(charactersDecoded, 88U);
}

TEST_F(SignatureCostTest, RefusesATextOfAnyOtherLengthUnread) {
  for (const std::size_t length : {0U, 84U, 87U, 89U, 92U, 16U << 20U}) {
    EXPECT_FALSE(isAccepted(test::frameOf({{"signature", std::string(length, 'A')}}))) << length;
    EXPECT_EQ(charactersDecoded, 0U) << length;
  }
}

}  // namespace
}  // namespace torvane
