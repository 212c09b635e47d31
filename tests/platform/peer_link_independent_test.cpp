// The second client, in another language with another WebSocket library, against the real link.

#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

#include "protocol/device_key.h"
#include "protocol/json.h"
#include "protocol/p2p_authentication.h"
#include "support/folders.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::LinkHost;

constexpr const char* kChallenge = "5D0C1E52-6F4B-4E0C-9F5B-3A1D2C7E8B90";

struct Ended {
  int status = -1;
  std::string output;
};

Ended run(const std::string& command) {
  Ended result;
  FILE* pipe = ::popen(command.c_str(), "re");
  if (pipe == nullptr) return result;
  std::array<char, 4096> part{};
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe)) {
    result.output.append(part.data(), size);
  }
  result.status = ::pclose(pipe);
  return result;
}

bool canRun() {
  return run("/usr/bin/python3 -c 'import nacl.signing, websockets' 2>/dev/null").status == 0;
}

std::string command(const LinkHost& host, const std::string& more) {
  return "/usr/bin/python3 '" + (sourceFolder() / "tests/platform/independent_client.py").string() +
         "' --port " + std::to_string(host.address.port) + more + " 2>&1";
}

void reply(const LinkHost::Received& to, const JsonObject& body, std::int64_t id) {
  const auto text = serializeJson(body).value_or("");
  auto frame = P2PFrame::encode({{"id", id}, {"status", 200}, {"contentType", "application/json"}},
                                asBytes(text));
  ASSERT_TRUE(frame);
  to.session->sendReliably(std::move(*frame), {to.peer});
}

// Answers one client as the program would; the digits that it would show.
void serve(LinkHost& host, std::optional<std::string>& digits) {
  auto invited = host.invitations.next();
  ASSERT_TRUE(invited && invited->context);
  digits = invited->digits;
  const auto key = SigningPublicKey::fromRaw(*invited->context);
  ASSERT_TRUE(key);
  invited->handler(true, host.session);
  const auto first = host.received.next();
  ASSERT_TRUE(first);
  const auto auth = P2PFrame::decode(first->data);
  ASSERT_TRUE(auth);
  EXPECT_EQ(stringMember(auth->header, "path"), "/p2p/auth");
  reply(*first, {{"challenge", kChallenge}}, integerMember(auth->header, "id").value_or(0));
  const auto second = host.received.next();
  ASSERT_TRUE(second);
  ReceivedIDs ids;
  const auto request = P2PAuthentication::verify(second->data, *key, kChallenge, ids);
  ASSERT_TRUE(request);
  EXPECT_EQ(stringMember(request->header, "path"), "/p2p/bridge-info");
  reply(*second, {{"version", "77"}}, integerMember(request->header, "id").value_or(0));
}

TEST(PeerLinkIndependentClient, PairsAuthenticatesAndAsks) {
  if (!canRun()) GTEST_SKIP() << "python3-websockets and python3-nacl are not installed";
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  Ended client;
  std::thread other([&] {
    client = run(command(host, " --ca-fingerprint " + fingerprintText(host.address.certificate)));
  });
  std::optional<std::string> digits;
  serve(host, digits);
  other.join();
  ASSERT_EQ(client.status, 0) << client.output;
  const auto printed = parseJsonObject(client.output.substr(0, client.output.find('\n')));
  ASSERT_TRUE(printed) << client.output;
  EXPECT_EQ(stringMember(*printed, "computer"), "Test computer");
  EXPECT_EQ(stringMember(*printed, "challenge"), kChallenge);
  EXPECT_EQ(stringMember(*printed, "digits"), digits);
  const auto* info = printed->if_contains("bridgeInfo");
  ASSERT_TRUE(info != nullptr && info->is_object());
  EXPECT_EQ(stringMember(info->get_object(), "version"), "77");
}

TEST(PeerLinkIndependentClient, OfVersion1IsServedWithoutDigits) {
  if (!canRun()) GTEST_SKIP() << "python3-websockets and python3-nacl are not installed";
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  Ended client;
  std::thread other([&] { client = run(command(host, " --version 1")); });
  std::optional<std::string> digits;
  serve(host, digits);
  other.join();
  EXPECT_EQ(client.status, 0) << client.output;
  EXPECT_FALSE(digits);
}

TEST(PeerLinkIndependentClient, LearnsThatItIsRefused) {
  if (!canRun()) GTEST_SKIP() << "python3-websockets and python3-nacl are not installed";
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  Ended client;
  std::thread other([&] { client = run(command(host, "")); });
  EXPECT_TRUE(host.answerNext(false));
  other.join();
  EXPECT_NE(client.status, 0);
  EXPECT_NE(client.output.find("refused: declined"), std::string::npos) << client.output;
}

TEST(PeerLinkIndependentClient, SendsNothingToAnotherComputer) {
  if (!canRun()) GTEST_SKIP() << "python3-websockets and python3-nacl are not installed";
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  const Ended client = run(command(host, " --ca-fingerprint " + std::string(64, '0')));
  EXPECT_NE(client.status, 0);
  EXPECT_NE(client.output.find("another computer"), std::string::npos) << client.output;
  EXPECT_TRUE(host.invitations.empty());
}

}  // namespace
}  // namespace torvane
