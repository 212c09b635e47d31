// Who may connect: paired devices at once, new ones when the user says so.
// Events: an invitation arrives, "Forget Paired Devices…". Fields: inviteNames, inviteDigits,
// ignoredDevices, warnedLegacyClients, pendingInvites, pairingAlertUp. Ports: Application, Alerts.

#include "app/bridge_delegate.h"
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

void BridgeDelegate::advertiserDidReceiveInvitation(Invitation invitation,
                                                    InvitationHandler handler) {
  main_.async([this, invitation = std::move(invitation), handler = std::move(handler)] {
    handleInvitation(invitation, handler);
  });
}

void BridgeDelegate::handleInvitation(const Invitation& invitation,
                                      const InvitationHandler& handler) {
  assertMainThread();
  const PeerID& peer = invitation.peer;
  const auto key =
      invitation.context ? SigningPublicKey::fromRaw(*invitation.context) : std::nullopt;
  if (!key) {
    handler(false, nullptr);
    warnLegacyClient(peer.displayName);
    return;
  }
  const std::string deviceKey = key->deviceKey();
  if (isPaired(deviceKey)) {
    admitPeer(peer, deviceKey);
    handler(true, session);
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
      [this, peer, deviceKey, handler](bool accept, std::shared_ptr<PeerSession> into) {
        if (accept) admitPeer(peer, deviceKey);
        handler(accept, std::move(into));
      });
  presentNextPairingAlert();
}

void BridgeDelegate::presentNextPairingAlert() {
  assertMainThread();
  if (pairingAlertUp || pendingInvites.empty()) return;
  const std::string deviceKey = pendingInvites.begin()->first;  // the smallest key
  const auto known = inviteNames.find(deviceKey);
  const std::string name = known != inviteNames.end() ? known->second : "iPad";

  pairingAlertUp = true;
  platform_.application.activateIgnoringOtherApps();
  AlertContent question = platform_.texts.pairing(withInviteDigits(deviceKey, name));
  question.isGuarded = true;  // it comes unasked, and one key would let a stranger in
  const bool accept = runAlert(question) == kAlertFirstButton;
  pairingAlertUp = false;

  answerInvitations(deviceKey, name, accept);
  presentNextPairingAlert();
}

std::string BridgeDelegate::withInviteDigits(const std::string& deviceKey,
                                             const std::string& name) const {
  const auto digits = inviteDigits.find(deviceKey);
  return digits != inviteDigits.end() ? nameWithDigits(name, digits->second) : name;
}

void BridgeDelegate::answerInvitations(const std::string& deviceKey, const std::string& name,
                                       bool accept) {
  const auto waiting = pendingInvites.extract(deviceKey);
  const bool isSaved = !accept || pair(deviceKey, name);
  if (!accept) ignoredDevices.insert(deviceKey);
  inviteNames.erase(deviceKey);
  inviteDigits.erase(deviceKey);
  if (!waiting.empty()) {
    for (const auto& reply : waiting.mapped()) reply(accept, accept ? session : nullptr);
  }
  if (!isSaved) warnNotSaved(pairingNotSaved(name));
}

void BridgeDelegate::warnLegacyClient(const std::string& name) {
  if (pairingAlertUp || !warnedLegacyClients.insert(name).second) return;
  pairingAlertUp = true;
  platform_.application.activateIgnoringOtherApps();
  runAlert(legacyClientAlert(name));
  pairingAlertUp = false;
  presentNextPairingAlert();
}

// No question about a device comes up over it; the next one is asked by who called this.
void BridgeDelegate::warnNotSaved(const std::string& text) {
  pairingAlertUp = true;
  platform_.application.activateIgnoringOtherApps();
  alert(text);
  pairingAlertUp = false;
}

void BridgeDelegate::forgetPairedDevices() {
  assertMainThread();
  platform_.application.activateIgnoringOtherApps();
  if (runAlert(kForgetAlert) != kAlertFirstButton) return;
  if (forgetAllPairings()) return;
  platform_.application.activateIgnoringOtherApps();
  alert(kForgettingNotSaved);
}

}  // namespace torvane
