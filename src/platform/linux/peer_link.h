#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/peer_link_limits.h"
#include "platform/linux/peer_link_runtime_file.h"
#include "ports/peer_session.h"

namespace torvane {

inline constexpr std::uint16_t kPeerLinkPort = 48484;

struct PeerLinkOptions {
  std::uint16_t preferredPort = kPeerLinkPort;  // 0: any
  std::string dataFolder;                       // for the certificate
  std::string runtimeFolder;                    // empty: no runtime file
  bool isPublished = true;                      // by DNS-SD
  PeerLinkTimes times;
  PeerLinkCaps caps;

  // Called on the link's thread each time it begins to listen.
  std::function<void(const LinkAddress&)> didListen;

  // The user's folders: "torvane" under $XDG_DATA_HOME and $XDG_RUNTIME_DIR.
  [[nodiscard]] static PeerLinkOptions fromEnvironment();
};

// The peer link over WebSocket and TLS 1.3 (docs/peer-link.md), served on a thread of its own.
// Delegates hear everything on that thread, save for failures of the advertising, which may come
// from another. What its sessions and invitation handlers are asked to do after it has gone has
// no effect; the sessions report nothing about its going.
class WebSocketPeerLink final : public PeerLink {
 public:
  explicit WebSocketPeerLink(PeerLinkOptions options);
  ~WebSocketPeerLink() override;
  WebSocketPeerLink(const WebSocketPeerLink&) = delete;
  WebSocketPeerLink& operator=(const WebSocketPeerLink&) = delete;

  [[nodiscard]] PeerID makePeerID(const std::string& displayName) override;
  [[nodiscard]] std::shared_ptr<PeerSession> makeSession(const PeerID& self,
                                                         PeerSessionDelegate& delegate) override;
  [[nodiscard]] std::unique_ptr<Advertiser> makeAdvertiser(
      const PeerID& self, const std::string& serviceType,
      std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate) override;
  [[nodiscard]] std::vector<std::string> addresses() const override;

 private:
  struct Running;
  std::unique_ptr<Running> running_;
};

}  // namespace torvane
