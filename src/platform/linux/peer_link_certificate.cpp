#include "platform/linux/peer_link_certificate.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include "platform/linux/private_file.h"

namespace torvane {
namespace {

template <auto free>
struct Free {
  template <typename T>
  void operator()(T* object) const {
    free(object);
  }
};
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Free<X509_free>>;
using Memory = std::unique_ptr<BIO, Free<BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, Free<X509_EXTENSION_free>>;

constexpr std::size_t kMaxPemSize = 16384;
constexpr const char* kCommonName = "Torvane P2P Helper";
// RFC 5280, section 4.1.2.5: no well-defined end. Devices know the certificate by its hash.
constexpr const char* kBeginning = "20240101000000Z";
constexpr const char* kNoEnd = "99991231235959Z";

bool setSerial(X509& certificate) {
  std::array<unsigned char, 16> random{};
  if (RAND_bytes(random.data(), random.size()) != 1) return false;
  random[0] = static_cast<unsigned char>((random[0] & 0x7FU) | 0x40U);  // positive, full length
  std::unique_ptr<BIGNUM, Free<BN_free>> number(BN_bin2bn(random.data(), random.size(), nullptr));
  return number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(&certificate)) != nullptr;
}

bool setName(X509& certificate) {
  X509_NAME* name = X509_get_subject_name(&certificate);
  const auto* text = reinterpret_cast<const unsigned char*>(kCommonName);
  return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0) == 1 &&
         X509_set_issuer_name(&certificate, name) == 1;
}

bool addExtension(X509& certificate, int kind, const char* value) {
  const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value));
  return extension && X509_add_ext(&certificate, extension.get(), -1) == 1;
}

Certificate makeCertificate(EVP_PKEY& key) {
  Certificate certificate(X509_new());
  if (!certificate) return nullptr;
  X509& made = *certificate;
  const bool isMade = X509_set_version(&made, 2) == 1 && setSerial(made) && setName(made) &&
                      ASN1_TIME_set_string_X509(X509_getm_notBefore(&made), kBeginning) == 1 &&
                      ASN1_TIME_set_string_X509(X509_getm_notAfter(&made), kNoEnd) == 1 &&
                      X509_set_pubkey(&made, &key) == 1 &&
                      addExtension(made, NID_basic_constraints, "critical,CA:FALSE") &&
                      addExtension(made, NID_key_usage, "critical,digitalSignature") &&
                      addExtension(made, NID_ext_key_usage, "serverAuth") &&
                      X509_sign(&made, &key, EVP_sha256()) > 0;
  return isMade ? std::move(certificate) : nullptr;
}

std::optional<LinkCertificate> newCertificate() {
  const Key key(EVP_EC_gen("P-256"));
  const Certificate certificate = key ? makeCertificate(*key) : nullptr;
  const Memory memory(BIO_new(BIO_s_mem()));
  if (!certificate || !memory ||
      PEM_write_bio_PrivateKey(memory.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) !=
          1 ||
      PEM_write_bio_X509(memory.get(), certificate.get()) != 1) {
    return std::nullopt;
  }
  char* text = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &text);
  return readCertificate(std::string(text, static_cast<std::size_t>(size)));
}

int refuseToAskForPassword(char*, int, int, void*) {
  return -1;
}

}  // namespace

std::optional<LinkCertificate> readCertificate(const std::string& pem) {
  const auto open = [&pem] {
    return Memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  };
  const Memory forKey = open();
  const Memory forCertificate = open();
  if (!forKey || !forCertificate) return std::nullopt;
  const Key key(PEM_read_bio_PrivateKey(forKey.get(), nullptr, refuseToAskForPassword, nullptr));
  const Certificate certificate(
      PEM_read_bio_X509(forCertificate.get(), nullptr, refuseToAskForPassword, nullptr));
  if (!key || !certificate || X509_check_private_key(certificate.get(), key.get()) != 1) {
    return std::nullopt;
  }
  LinkCertificate result{pem, {}};
  unsigned size = 0;
  if (X509_digest(certificate.get(), EVP_sha256(), result.hash.data(), &size) != 1) {
    return std::nullopt;
  }
  return result;
}

std::optional<LinkCertificate> keptCertificate(const std::string& folder) {
  if (!makePrivateFolder(folder)) return newCertificate();
  const std::string path = folder + "/peer-link.pem";
  const FileLock lock(folder + "/peer-link.lock");
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    const auto pem = readSmallFile(path, kMaxPemSize);
    auto kept = pem ? readCertificate(*pem) : std::nullopt;
    if (kept) {
      ::chmod(path.c_str(), 0600);
      return kept;
    }
    std::rename(path.c_str(), (path + ".broken").c_str());
  }
  auto made = newCertificate();
  // A file that cannot be written costs the devices their memory of this computer, not the talk.
  if (made) static_cast<void>(writePrivateFile(path, made->pem));
  return made;
}

std::string fingerprintText(const CertificateHash& hash) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : hash) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

}  // namespace torvane
