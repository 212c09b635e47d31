// The first message of a stranger on the peer link: whatever it is, the name it leads to is fit to
// be shown, and nobody proves a key that is not theirs.

#include <algorithm>

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
constexpr LinkNonce kNonce{4, 5, 6};
constexpr LinkNonce kOtherNonce{7, 8, 9};

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
  const auto hello = parseJsonObject(helloMessage(name, kNonce));
  require(hello && stringMember(*hello, "name") == name, "a name can be said");
}

// The invitation as it came, and as the owner of a key would have signed it.
void checkProof(PeerInvitation invitation) {
  if (!invitation.context) {
    require(!invitation.signature, "a signature is of a key");
    return;
  }
  require(!isProven(invitation, kNonce, kCertificate), "nobody signs without the key");
  const test::SigningDevice device{5};
  invitation.context = device.rawKey();
  invitation.signature = device.sign(proofMessage(kNonce, kCertificate));
  require(isProven(invitation, kNonce, kCertificate), "the owner proves the key");
  require(!isProven(invitation, kOtherNonce, kCertificate), "on this connection only");
  require(!isProven(invitation, kNonce, CertificateHash{}), "and to this computer only");
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
