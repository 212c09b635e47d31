#include "torvane_ipad/handshake.h"

#include <sodium.h>

#include "peer/masked_digits.h"

namespace torvane::ipad {
namespace {

LinkFailure misbehaviour(std::string what) {
  return {LinkFailure::Kind::misbehaviour, std::move(what)};
}

}  // namespace

Handshake::Handshake(DeviceIdentity identity, std::string displayName, const Fingerprint& helper)
    : identity_(std::move(identity)), displayName_(std::move(displayName)), helper_(helper) {
  randombytes_buf(deviceNonce_.data(), deviceNonce_.size());
  welcome_.fingerprint = hexText(helper);
}

Handshake::Step Handshake::received(std::string_view text) {
  const auto message = parseControl(text);
  const auto* hello = message ? std::get_if<Hello>(&*message) : nullptr;
  if (!message || (hello == nullptr) != hasInvited_) {
    return misbehaviour("it said something unexpected");
  }
  if (hello != nullptr) return invite(*hello);
  if (const auto* refused = std::get_if<Refused>(&*message)) {
    return LinkFailure{LinkFailure::Kind::refused, refused->reason};
  }
  if (const auto* waiting = std::get_if<Waiting>(&*message)) return wait(waiting->opening);
  if (welcome_.digits.empty()) return misbehaviour("it did not open its commitment");
  return Begin{};
}

Handshake::Step Handshake::invite(const Hello& hello) {
  if (hello.version != kLinkVersion) {
    return LinkFailure{LinkFailure::Kind::notAHelper,
                       "it speaks version " + std::to_string(hello.version) + " of the peer link"};
  }
  // Its name is shown beside the digits, and must not bring others.
  welcome_.helperName = withDigitsMasked(hello.name);
  commitment_ = hello.commitment;
  auto text = makeInvite(identity_, displayName_, hello, deviceNonce_, helper_);
  if (!text) return LinkFailure{LinkFailure::Kind::refused, "name"};
  hasInvited_ = true;
  return Send{std::move(*text)};
}

// A helper that does not keep to the nonce that it committed itself to could choose the digits.
Handshake::Step Handshake::wait(const LinkNonce& opening) {
  if (!welcome_.digits.empty() || pairingCommitment(opening) != commitment_) {
    return misbehaviour("it did not open its commitment");
  }
  const auto key = identity_.publicKey();
  welcome_.digits = pairingDigits({{key.begin(), key.end()}, helper_, opening, deviceNonce_});
  return Wait{};
}

}  // namespace torvane::ipad
