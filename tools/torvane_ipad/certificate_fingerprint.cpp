#include "torvane_ipad/certificate_fingerprint.h"

#include <openssl/x509.h>

#include <memory>

namespace torvane::ipad {

std::optional<Fingerprint> peerFingerprint(SSL* tls) {
  const std::unique_ptr<X509, decltype(&X509_free)> certificate(SSL_get1_peer_certificate(tls),
                                                                &X509_free);
  if (!certificate) return std::nullopt;
  unsigned char* der = nullptr;
  const int size = i2d_X509(certificate.get(), &der);
  if (size <= 0) return std::nullopt;
  Fingerprint digest{};
  crypto_hash_sha256(digest.data(), der, static_cast<unsigned>(size));
  OPENSSL_free(der);
  return digest;
}

std::string hexText(const Fingerprint& digest) {
  std::string text(digest.size() * 2 + 1, '\0');
  sodium_bin2hex(text.data(), text.size(), digest.data(), digest.size());
  text.pop_back();
  return text;
}

}  // namespace torvane::ipad
