// The first message of a stranger on the peer link: whatever it is, the name it leads to is fit to
// be shown, and nobody proves a key that is not theirs.

#include <algorithm>

#include "peer/masked_digits.h"
#include "peer/peer_name.h"
#include "platform/linux/peer_link_invitation.h"
#include "protocol/json.h"
#include "protocol/utf8.h"
#include "require.h"
#include "support/signing_device.h"

using namespace torvane;
using fuzz::require;

namespace {

constexpr CertificateHash kCertificate{1, 2, 3};
constexpr LinkNonce kDeviceNonce{10, 11};
constexpr LinkGreeting kFirst{{4, 5, 6}, {}};
constexpr LinkGreeting kSecond{{4, 5, 6}, LinkNonce{12, 13}};
constexpr LinkGreeting kOther{{7, 8, 9}, LinkNonce{14}};

void checkName(const std::string& name) {
  require(!name.empty() && name.size() <= kMaxPeerName && isValidUtf8(name), "a name is short");
  require(std::ranges::none_of(
              name, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }),
          "a name is one line");
  for (const char* mark : {"\u202A", "\u202B", "\u202C", "\u202D", "\u202E", "\u2066", "\u2067",
                           "\u2068", "\u2069", "\u200E", "\u200F", "\u061C", "\u2028", "\u2029"}) {
    require(name.find(mark) == std::string::npos, "a name does not turn the writing around");
  }
  require(name.find_first_not_of(' ') != std::string::npos, "a name shows something");
  require(shownPeerName(name) == name, "a name that is shown stays as it is");
  require(withDigitsMasked(name) == name, "a name brings no digits along");
  for (const auto& greeting : {kFirst, kSecond}) {
    const auto hello = parseJsonObject(helloMessage(name, greeting));
    require(hello && stringMember(*hello, "name") == name, "a name can be said");
  }
}

// The invitation as its key's owner would have signed it.
PeerInvitation signedBy(const test::SigningDevice& device, PeerInvitation invitation,
                        const LinkGreeting& greeting) {
  std::optional<PairingOffer> offer;
  if (greeting.pairingNonce) offer = {pairingCommitment(*greeting.pairingNonce), kDeviceNonce};
  invitation.context = device.rawKey();
  invitation.nonce = kDeviceNonce;
  invitation.signature = device.sign(proofMessage(greeting.nonce, kCertificate, offer));
  return invitation;
}

// The invitation as it came, and as the owner of a key would have signed it.
void checkProof(const PeerInvitation& invitation) {
  if (!invitation.context) {
    require(!invitation.signature, "a signature is of a key");
    require(!digitsOf(invitation, kSecond, kCertificate), "and so are digits");
    return;
  }
  const test::SigningDevice device{5};
  for (const auto& [own, other] : {std::pair{kFirst, kSecond}, std::pair{kSecond, kFirst}}) {
    require(!isProven(invitation, own, kCertificate), "nobody signs without the key");
    const auto owners = signedBy(device, invitation, own);
    require(isProven(owners, own, kCertificate), "the owner proves the key");
    require(!isProven(owners, other, kCertificate), "in this version only");
    require(!isProven(owners, kOther, kCertificate), "on this connection only");
    require(!isProven(owners, own, CertificateHash{}), "and to this computer only");
    require(digitsOf(owners, own, kCertificate).has_value() == own.pairingNonce.has_value(),
            "there are digits in version 2");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto read = readInvitation(asText({data, std::min(size, kMaxControlMessage)}));
  if (const auto* invitation = std::get_if<PeerInvitation>(&read)) {
    checkName(invitation->name);
    checkProof(*invitation);
  } else {
    require(parseJsonObject(refusedMessage(std::get<LinkRefusal>(read))).has_value(),
            "a refusal can be said");
  }
  return 0;
}
