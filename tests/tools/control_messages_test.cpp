#include "torvane_ipad/control_messages.h"

#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/json.h"

namespace torvane::ipad {
namespace {

const std::string kNonce = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";

std::string hello(const std::string& nonce) {
  return R"({"type":"hello","version":1,"name":"Mini","nonce":")" + nonce + "\"}";
}

TEST(ControlMessages, ReadsAHello) {
  const auto message = parseControl(hello(kNonce));
  ASSERT_TRUE(message && std::holds_alternative<Hello>(*message));
  EXPECT_EQ(std::get<Hello>(*message).version, 1);
  EXPECT_EQ(std::get<Hello>(*message).name, "Mini");
  EXPECT_EQ(std::get<Hello>(*message).nonce.size(), 32U);
}

TEST(ControlMessages, ReadsTheAnswersToAnInvitation) {
  const auto is = [](const char* text, auto kind) {
    const auto message = parseControl(text);
    return message && std::holds_alternative<decltype(kind)>(*message);
  };
  EXPECT_TRUE(is(R"({"type":"waiting"})", Waiting{}));
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
  EXPECT_FALSE(parseControl(R"({"type":"waiting","x":")" + std::string(5000, 'x') + "\"}"));
}

TEST(ControlMessages, InvitationProvesTheKeyForThisConnection) {
  const DeviceIdentity identity(DeviceIdentity::Seed{1, 2, 3});
  const Bytes nonce(32, 4);
  const Bytes fingerprint(32, 5);
  const auto text = makeInvite(identity, "iPad", nonce, fingerprint);
  ASSERT_TRUE(text);
  const auto invite = parseJsonObject(*text);
  ASSERT_TRUE(invite);
  EXPECT_EQ(stringMember(*invite, "type"), "invite");
  EXPECT_EQ(stringMember(*invite, "name"), "iPad");

  const auto key = SigningPublicKey::fromDeviceKey(*stringMember(*invite, "context"));
  const auto signature = base64Decode(*stringMember(*invite, "signature"));
  ASSERT_TRUE(key && signature);
  Bytes message = toBytes("torvane-peer-link-1");
  message.insert(message.end(), 32, 4);
  message.insert(message.end(), 32, 5);
  EXPECT_TRUE(key->isValidSignature(*signature, message));
}

TEST(ControlMessages, MakesNoInvitationWithANameThatIsNotUtf8) {
  const DeviceIdentity identity(DeviceIdentity::Seed{});
  EXPECT_FALSE(makeInvite(identity, "\xff", Bytes(32), Bytes(32)));
}

}  // namespace
}  // namespace torvane::ipad
