#include <gtest/gtest.h>

#include "support/link_host.h"

namespace torvane {
namespace {

using testing::LinkClient;
using testing::LinkHost;
using Headers = std::vector<std::string>;

constexpr const char* kHost = "Host: desk.local:48484";
constexpr const char* kKey = "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==";
constexpr const char* kVersion = "Sec-WebSocket-Version: 13";
constexpr std::size_t kMostHeaderBytes = 8192;

// An upgrade to the link, byte for byte, with these headers beside those that all have.
std::string upgradeWith(const Headers& headers) {
  std::string text =
      "GET /link HTTP/1.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
      "Sec-WebSocket-Protocol: torvane.link.2\r\n";
  for (const std::string& header : headers) text += header + "\r\n";
  return text + "\r\n";
}

// The same, filled up to this size.
std::string upgradeOfSize(std::size_t size) {
  const std::string plain = upgradeWith({kHost, kKey, kVersion, "X-Filler: "});
  return upgradeWith({kHost, kKey, kVersion, "X-Filler: " + std::string(size - plain.size(), 'x')});
}

// What comes back until the link ends the connection; "?" where it does not.
std::string answerTo(const LinkHost& host, const std::string& text) {
  LinkClient client(host.clientOptions());
  if (!client.connectTls() || !client.sendRaw(asBytes(text))) return "?";
  return client.receiveRaw().value_or("?");
}

std::string statusOf(const std::string& answer) {
  return answer.substr(0, answer.find("\r\n"));
}

PeerLinkOptions impatient() {
  PeerLinkOptions options;
  options.times.handshake = std::chrono::milliseconds(500);  // ends what was upgraded
  return options;
}

class PeerLinkUpgrade : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(host_.start(), 0); }
  std::string answer(const Headers& headers) { return answerTo(host_, upgradeWith(headers)); }

  LinkHost host_{impatient()};
};

TEST_F(PeerLinkUpgrade, IsAnsweredWithTheHello) {
  const std::string all = answer({kHost, kKey, kVersion});
  EXPECT_EQ(statusOf(all), "HTTP/1.1 101 Switching Protocols");
  EXPECT_NE(all.find("Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo="), all.npos);  // RFC 6455
  EXPECT_NE(all.find("\"type\":\"hello\""), all.npos);
}

TEST_F(PeerLinkUpgrade, OfAnotherVersionIsToldWhichOneIsSpoken) {
  for (const char* version : {"8", "0", "14"}) {
    const std::string all = answer({kHost, kKey, std::string("Sec-WebSocket-Version: ") + version});
    EXPECT_EQ(statusOf(all), "HTTP/1.1 426 Upgrade Required") << version;
    EXPECT_NE(all.find("Sec-WebSocket-Version: 13\r\n"), all.npos) << version;
    EXPECT_EQ(all.find("hello"), all.npos) << version;
  }
}

TEST_F(PeerLinkUpgrade, WithoutWhatItNeedsIsABadRequest) {
  for (const Headers& headers :
       {Headers{kKey, kVersion}, Headers{kHost, kVersion}, Headers{kHost, kKey}}) {
    const std::string all = answer(headers);
    EXPECT_EQ(statusOf(all), "HTTP/1.1 400 Bad Request") << upgradeWith(headers);
    EXPECT_EQ(all.find("hello"), all.npos);
  }
}

TEST_F(PeerLinkUpgrade, MayHaveAsManyBytesAsAreAllowedAndNoMore) {
  EXPECT_EQ(upgradeOfSize(kMostHeaderBytes).size(), kMostHeaderBytes);
  EXPECT_EQ(statusOf(answerTo(host_, upgradeOfSize(kMostHeaderBytes))),
            "HTTP/1.1 101 Switching Protocols");
  EXPECT_EQ(answerTo(host_, upgradeOfSize(kMostHeaderBytes + 1)), "");
}

TEST_F(PeerLinkUpgrade, InHeadersWithoutEndIsNotWaitedFor) {
  const std::string endless = upgradeWith({kHost}).substr(0, 100) + std::string(9000, 'x');
  EXPECT_EQ(answerTo(host_, endless), "");
  EXPECT_EQ(answerTo(host_, "\x01\x02 no HTTP\r\n\r\n"), "");
}

}  // namespace
}  // namespace torvane
