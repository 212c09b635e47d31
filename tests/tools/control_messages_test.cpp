#include "torvane_ipad/control_messages.h"

#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/json.h"

namespace torvane::ipad {
namespace {

const std::string kNonce = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";

const std::string kCommitment = "Zmh6rfhivXdsj8GLjp+OIAiXFIVu4jOzkCpZHQ1fKSU=";

std::string hello(const std::string& nonce, const std::string& commitment = kCommitment) {
  return R"({"type":"hello","version":2,"name":"Mini","nonce":")" + nonce + R"(","commitment":")" +
         commitment + "\"}";
}

TEST(ControlMessages, ReadsAHello) {
  const auto message = parseControl(hello(kNonce));
  ASSERT_TRUE(message && std::holds_alternative<Hello>(*message));
  EXPECT_EQ(std::get<Hello>(*message).version, 2);
  EXPECT_EQ(std::get<Hello>(*message).name, "Mini");
  EXPECT_EQ(base64Encode(std::get<Hello>(*message).nonce), kNonce);
  EXPECT_EQ(base64Encode(std::get<Hello>(*message).commitment), kCommitment);
}

TEST(ControlMessages, ReadsTheVersionOfAnOtherHello) {
  const auto message =
      parseControl(R"({"type":"hello","version":1,"name":"Mini","nonce":")" + kNonce + "\"}");
  ASSERT_TRUE(message && std::holds_alternative<Hello>(*message));
  EXPECT_EQ(std::get<Hello>(*message).version, 1);
}

TEST(ControlMessages, ReadsTheAnswersToAnInvitation) {
  const auto is = [](const char* text, auto kind) {
    const auto message = parseControl(text);
    return message && std::holds_alternative<decltype(kind)>(*message);
  };
  const std::string waiting = R"({"type":"waiting","opening":")" + kNonce + "\"}";
  EXPECT_TRUE(is(waiting.c_str(), Waiting{}));
  EXPECT_TRUE(is(R"({"type":"accepted"})", Accepted{}));
  EXPECT_TRUE(is(R"({"type":"refused"})", Refused{}));
  const auto refused = parseControl(R"({"type":"refused","reason":"busy"})");
  EXPECT_EQ(std::get<Refused>(*refused).reason, "busy");
}

TEST(ControlMessages, RefusesWhatAHelperDoesNotSay) {
  EXPECT_FALSE(parseControl(""));
  EXPECT_FALSE(parseControl("[]"));
  EXPECT_FALSE(parseControl(R"({"type":"invite"})"));
  EXPECT_FALSE(parseControl(R"({"type":1})"));
  EXPECT_FALSE(parseControl(hello("AAAA"))) << "a short nonce";
  EXPECT_FALSE(parseControl(hello("?")));
  EXPECT_FALSE(parseControl(hello(kNonce, "AAAA"))) << "a short commitment";
  EXPECT_FALSE(parseControl(R"({"type":"waiting"})"));
  EXPECT_FALSE(parseControl(R"({"type":"waiting","opening":"AAAA"})"));
  EXPECT_FALSE(parseControl(R"({"type":"waiting","x":")" + std::string(5000, 'x') + "\"}"));
}

TEST(ControlMessages, InvitationProvesTheKeyForThisConnection) {
  const DeviceIdentity identity(DeviceIdentity::Seed{1, 2, 3});
  Hello hello{2, "Mini", {}, {}};
  hello.nonce.fill(4);
  hello.commitment.fill(6);
  CertificateHash fingerprint{};
  fingerprint.fill(5);
  LinkNonce deviceNonce{};
  deviceNonce.fill(7);
  const auto text = makeInvite(identity, "iPad", hello, deviceNonce, fingerprint);
  ASSERT_TRUE(text);
  const auto invite = parseJsonObject(*text);
  ASSERT_TRUE(invite);
  EXPECT_EQ(stringMember(*invite, "type"), "invite");
  EXPECT_EQ(stringMember(*invite, "name"), "iPad");

  const auto key = SigningPublicKey::fromDeviceKey(*stringMember(*invite, "context"));
  const auto signature = base64Decode(*stringMember(*invite, "signature"));
  ASSERT_TRUE(key && signature);
  EXPECT_EQ(stringMember(*invite, "nonce"), base64Encode(Bytes(32, 7)));
  Bytes message = toBytes("torvane-peer-link-2");
  for (const std::uint8_t part : Bytes{4, 5, 6, 7}) message.insert(message.end(), 32, part);
  EXPECT_TRUE(key->isValidSignature(*signature, message));
}

TEST(ControlMessages, MakesNoInvitationWithANameThatIsNotUtf8) {
  const DeviceIdentity identity(DeviceIdentity::Seed{});
  EXPECT_FALSE(makeInvite(identity, "\xff", {}, {}, {}));
}

}  // namespace
}  // namespace torvane::ipad
