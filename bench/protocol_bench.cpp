// Frames against a plain copy of the same bytes, and the check of a signed request against the
// signature library alone.

#include <sodium.h>

#include <cstdio>
#include <cstring>

#include "measure.h"
#include "protocol/base64.h"
#include "protocol/p2p_authentication.h"
#include "protocol/p2p_frame.h"
#include "support/signing_device.h"

namespace torvane::bench {
namespace {

const JsonObject kHeader = {{"id", 123456},
                            {"path", "/api/ink/events?since=42"},
                            {"method", "POST"},
                            {"contentType", "application/json"}};

void printRow(const char* what, std::size_t size, const Pair& pair) {
  std::printf("%-22s %9zu B %10.2f us %10.2f us %7.2f\n", what, size, pair.work, pair.floor,
              pair.ratio());
}

void measureFrames(std::size_t size) {
  const Bytes body(size, 0x5A);
  const Bytes frame = P2PFrame::encode(kHeader, body).value();
  const auto copy = [&frame] {
    const Bytes copied(frame.begin(), frame.end());
    keep(copied);
  };
  printRow("frame encode / copy", size,
           compare([&] { keep(P2PFrame::encode(kHeader, body)); }, copy));
  printRow("frame decode / copy", size, compare([&] { keep(P2PFrame::decode(frame)); }, copy));
}

void measureVerification(std::size_t size) {
  const test::SigningDevice device(1);
  const std::string challenge = "01234567-89AB-4CDE-8F01-23456789ABCD";
  const Bytes envelope = device.envelope(challenge, kHeader, Bytes(size, 0x5A));
  const auto outer = P2PFrame::decode(envelope).value();
  Bytes message = toBytes(challenge);
  message.insert(message.end(), outer.body.begin(), outer.body.end());
  const Bytes signature = device.sign(message);
  const Bytes key = device.rawKey();
  const auto bare = [&] {
    keep(crypto_sign_verify_detached(signature.data(), message.data(), message.size(), key.data()));
  };
  const auto verify = [&] {
    ReceivedIDs none;
    keep(P2PAuthentication::verify(envelope, device.publicKey(), challenge, none));
  };
  printRow("verify / library", size, compare(verify, bare));
}

}  // namespace
}  // namespace torvane::bench

int main() {
  std::printf("%-22s %11s %13s %13s %7s\n", "", "body", "ours", "floor", "ratio");
  for (const std::size_t size : {200UL, 16UL << 10U, 256UL << 10U, 1UL << 20U, 8UL << 20U}) {
    torvane::bench::measureFrames(size);
  }
  for (const std::size_t size : {200UL, 16UL << 10U, 1UL << 20U, 8UL << 20U}) {
    torvane::bench::measureVerification(size);
  }
  return 0;
}
