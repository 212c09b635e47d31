#include "protocol/sha256.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

std::string sha256(std::string_view text) {
  Sha256 hash;
  hash.add(asBytes(text));
  return hash.hexadecimal();
}

// The examples of FIPS 180-2.
TEST(Sha256, AgreesWithTheStandardsExamples) {
  EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256(std::string(1'000'000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, ComesToTheSameInPieces) {
  Sha256 pieces;
  for (const char* piece : {"a", "", "bc"}) pieces.add(asBytes(piece));
  EXPECT_EQ(pieces.hexadecimal(), sha256("abc"));
}

}  // namespace
}  // namespace torvane
