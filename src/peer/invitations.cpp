#include "peer/invitations.h"

#include "peer/pairing_digits.h"
#include "protocol/device_key.h"

namespace torvane {
namespace {

AlertContent legacyClientAlert(const std::string& name) {
  return {.message = "“" + name + "” needs the new Torvane app",
          .informativeText =
              "That iPad is running an older Torvane that can no longer pair with "
              "this helper. Update the app on the iPad, then approve it here when "
              "it asks to pair again.",
          .style = AlertContent::Style::warning};
}

const AlertContent kForgetAlert = {
    .message = "Forget all paired devices?",
    .informativeText =
        "Each device will need to be approved again the next time it connects. "
        "Devices connected right now stay connected until they drop.",
    .buttons = {"Forget All", "Cancel"}};

std::string pairingNotSaved(const std::string& name) {
  return "The pairing with “" + name +
         "” could not be saved. Is the disk full?\n\nIt holds until this app quits, and will be "
         "saved as soon as there is room.";
}

constexpr const char* kForgettingNotSaved =
    "That the paired devices are forgotten could not be saved. Is the disk full?\n\nIt holds until "
    "this app quits, and will be saved as soon as there is room.";

}  // namespace

void Invitations::handleInvitation(const Invitation& invitation, const InvitationHandler& handler) {
  const PeerID& peer = invitation.peer;
  const auto key =
      invitation.context ? SigningPublicKey::fromRaw(*invitation.context) : std::nullopt;
  if (!key) {
    handler(false, nullptr);
    warnLegacyClient(peer.displayName);
    return;
  }
  const std::string deviceKey = key->deviceKey();
  const auto accept = [this, peer, key = *key, handler] {
    admitted_.admit(peer, key);
    handler(true, host_.currentSession());
  };
  if (registry_.isPaired(deviceKey)) {
    accept();
    return;
  }
  if (ignoredDevices.count(deviceKey) != 0) {
    handler(false, nullptr);
    return;
  }
  inviteNames[deviceKey] = peer.displayName;
  // Those of the first one stay: who could invite until the digits suit him would need no luck.
  if (invitation.digits) inviteDigits.emplace(deviceKey, *invitation.digits);
  pendingInvites[deviceKey].push_back(
      [accept, handler](bool isAccepted) { isAccepted ? accept() : handler(false, nullptr); });
  presentNextPairingAlert();
}

void Invitations::presentNextPairingAlert() {
  if (pairingAlertUp || pendingInvites.empty()) return;
  const std::string deviceKey = pendingInvites.begin()->first;  // the smallest key
  const auto known = inviteNames.find(deviceKey);
  const std::string name = known != inviteNames.end() ? known->second : "iPad";

  pairingAlertUp = true;
  ports_.application.activateIgnoringOtherApps();
  AlertContent question = ports_.texts.pairing(withInviteDigits(deviceKey, name));
  question.isGuarded = true;  // it comes unasked, and one key would let a stranger in
  const bool accept = dialogs_.runAlert(question) == kAlertFirstButton;
  pairingAlertUp = false;

  answer(deviceKey, name, accept);
  presentNextPairingAlert();
}

std::string Invitations::withInviteDigits(const std::string& deviceKey,
                                          const std::string& name) const {
  const auto digits = inviteDigits.find(deviceKey);
  return digits != inviteDigits.end() ? nameWithDigits(name, digits->second) : name;
}

void Invitations::answer(const std::string& deviceKey, const std::string& name, bool accept) {
  const auto waiting = pendingInvites.extract(deviceKey);
  const bool isSaved = !accept || registry_.pair(deviceKey, name);
  if (!accept) ignoredDevices.insert(deviceKey);
  inviteNames.erase(deviceKey);
  inviteDigits.erase(deviceKey);
  if (!waiting.empty()) {
    for (const auto& reply : waiting.mapped()) reply(accept);
  }
  if (!isSaved) warnNotSaved(pairingNotSaved(name));
}

void Invitations::warnLegacyClient(const std::string& name) {
  if (pairingAlertUp || !warnedLegacyClients.insert(name).second) return;
  pairingAlertUp = true;
  ports_.application.activateIgnoringOtherApps();
  dialogs_.runAlert(legacyClientAlert(name));
  pairingAlertUp = false;
  presentNextPairingAlert();
}

// No question about a device comes up over it; the next one is asked by who called this.
void Invitations::warnNotSaved(const std::string& text) {
  pairingAlertUp = true;
  ports_.application.activateIgnoringOtherApps();
  dialogs_.alert(text);
  pairingAlertUp = false;
}

void Invitations::forgetPairedDevices() {
  ports_.application.activateIgnoringOtherApps();
  if (dialogs_.runAlert(kForgetAlert) != kAlertFirstButton) return;
  if (registry_.forgetAll()) return;
  ports_.application.activateIgnoringOtherApps();
  dialogs_.alert(kForgettingNotSaved);
}

}  // namespace torvane
