#include "platform/linux/peer_link_runtime_file.h"

#include <unistd.h>

#include "platform/linux/private_file.h"
#include "protocol/json.h"

namespace torvane {

PeerLinkRuntimeFile::PeerLinkRuntimeFile(const std::string& folder, const LinkAddress& address) {
  const auto content = serializeJson({{"port", address.port},
                                      {"fingerprint", fingerprintText(address.certificate)},
                                      {"name", address.name},
                                      {"pid", static_cast<std::int64_t>(::getpid())}});
  if (folder.empty() || !content || !makePrivateFolder(folder)) return;
  path_ = folder + "/peer-link.json";
  content_ = *content + "\n";
  if (!writePrivateFile(path_, content_)) path_.clear();
}

PeerLinkRuntimeFile::~PeerLinkRuntimeFile() {
  // Another program that started later may have put its own there.
  if (!path_.empty() && readSmallFile(path_, content_.size()) == content_) ::unlink(path_.c_str());
}

}  // namespace torvane
