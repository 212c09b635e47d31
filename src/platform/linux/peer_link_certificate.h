#pragma once

#include <optional>
#include <string>

#include "platform/linux/peer_link_invitation.h"

namespace torvane {

// This computer's own certificate, with its private key.
struct LinkCertificate {
  std::string pem;  // key and certificate
  CertificateHash hash{};
};

// The one kept in `folder`, made at the first call. Programs that call at the same time get the
// same one. A file that is broken is put aside under ".broken". Where nothing can be written the
// certificate lasts for this run only; none when not even that can be made.
[[nodiscard]] std::optional<LinkCertificate> keptCertificate(const std::string& folder);

// Reads "peer-link.pem" text: none unless it holds a certificate and the key that belongs to it.
[[nodiscard]] std::optional<LinkCertificate> readCertificate(const std::string& pem);

// 64 lower-case hexadecimal digits.
[[nodiscard]] std::string fingerprintText(const CertificateHash& hash);

}  // namespace torvane
