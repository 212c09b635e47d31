#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "peer/admitted_peers.h"
#include "peer/pairing_registry.h"
#include "ports/application.h"
#include "ports/desktop_texts.h"
#include "ports/peer_session.h"
#include "ports/user_dialogs.h"

namespace torvane {

// Who may connect: paired devices at once, new ones when the user says so. Main thread only.
class Invitations {
 public:
  struct Ports {
    Application& application;
    const DesktopTexts& texts;
  };

  class Host {
   public:
    // The session that accepted devices come into.
    [[nodiscard]] virtual std::shared_ptr<PeerSession> currentSession() const = 0;

   protected:
    ~Host() = default;
  };

  Invitations(const Ports& ports, PairingRegistry& registry, AdmittedPeers& admitted,
              UserDialogs& dialogs, const Host& host)
      : ports_(ports), registry_(registry), admitted_(admitted), dialogs_(dialogs), host_(host) {}

  // Asks the user about a device that is new, and returns after that.
  void handleInvitation(const Invitation& invitation, const InvitationHandler& handler);

  // "Forget Paired Devices…"
  void forgetPairedDevices();

 private:
  using Reply = std::function<void(bool accept)>;

  void presentNextPairingAlert();
  [[nodiscard]] std::string withInviteDigits(const std::string& deviceKey,
                                             const std::string& name) const;
  void answer(const std::string& deviceKey, const std::string& name, bool accept);
  void warnLegacyClient(const std::string& name);
  void warnNotSaved(const std::string& text);

  const Ports ports_;
  PairingRegistry& registry_;
  AdmittedPeers& admitted_;
  UserDialogs& dialogs_;
  const Host& host_;

  std::map<std::string, std::string> inviteNames;            // device key → display name
  std::map<std::string, std::string> inviteDigits;           // → its first invitation's digits
  std::map<std::string, std::vector<Reply>> pendingInvites;  // → who waits for the user's answer
  std::set<std::string> ignoredDevices;                      // device keys
  std::set<std::string> warnedLegacyClients;                 // display names
  bool pairingAlertUp = false;
};

}  // namespace torvane
