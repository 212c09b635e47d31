#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "peer/admitted_peers.h"
#include "ports/peer_session.h"

namespace torvane {

// The one current session with its peers, and the advertiser. Main thread only.
class PeerSessions {
 public:
  class Host {
   public:
    virtual void linkDidChange() = 0;  // who is connected, or whether it is advertised

   protected:
    ~Host() = default;
  };

  // Peers see this computer under `name`.
  PeerSessions(PeerLink& link, const std::string& name, AdmittedPeers& admitted, Host& host)
      : link_(link), admitted_(admitted), host_(host), peerID(link.makePeerID(name)) {}

  void open(PeerSessionDelegate& delegate);
  void startAdvertising(std::shared_ptr<const RegisteredKeys> registered,
                        AdvertiserDelegate& delegate);
  void close();  // for the program's end, after both of the above

  [[nodiscard]] const std::shared_ptr<PeerSession>& current() const { return session; }
  [[nodiscard]] const std::string& displayName() const { return peerID.displayName; }
  // Display names, in the session's order.
  [[nodiscard]] const std::vector<std::string>& connectedNames() const { return connectedPeers; }
  // A sentence for the user; none while all is well.
  [[nodiscard]] const std::optional<std::string>& advertisingError() const {
    return advertiseError;
  }

  void peerDidChange(PeerSession& reporting, const PeerID& peer, PeerState state);
  void advertisingDidChange(std::optional<std::string> error);

 private:
  void makeSession();

  PeerLink& link_;
  AdmittedPeers& admitted_;
  Host& host_;
  PeerSessionDelegate* delegate_ = nullptr;

  PeerID peerID;
  std::shared_ptr<PeerSession> session;
  std::unique_ptr<Advertiser> advertiser;
  std::vector<std::string> connectedPeers;
  std::optional<std::string> advertiseError;
};

}  // namespace torvane
