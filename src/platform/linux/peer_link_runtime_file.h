#pragma once

#include <string>

#include "platform/linux/peer_link_certificate.h"

namespace torvane {

// Where the link listens, for programs of the same user on this computer.
struct LinkAddress {
  std::uint16_t port = 0;
  CertificateHash certificate{};
  std::string name;
};

// "peer-link.json" in a private folder, there while it lives. No folder, no file.
class PeerLinkRuntimeFile {
 public:
  PeerLinkRuntimeFile(const std::string& folder, const LinkAddress& address);
  ~PeerLinkRuntimeFile();
  PeerLinkRuntimeFile(const PeerLinkRuntimeFile&) = delete;
  PeerLinkRuntimeFile& operator=(const PeerLinkRuntimeFile&) = delete;

 private:
  std::string path_;
  std::string content_;
};

}  // namespace torvane
