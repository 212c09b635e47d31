// A server's certificate is checked against the system's authorities.

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>

#include "platform/curl_http_session_fixture.h"
#include "support/own_mounts.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

template <auto Free>
struct Freeing {
  template <typename Pointer>
  void operator()(Pointer* pointer) const {
    Free(pointer);
  }
};
using Key = std::unique_ptr<EVP_PKEY, Freeing<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freeing<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Freeing<X509_EXTENSION_free>>;
using TlsContext = std::unique_ptr<SSL_CTX, Freeing<SSL_CTX_free>>;
using TlsStream = std::unique_ptr<SSL, Freeing<SSL_free>>;

// Of a server at 127.0.0.1: valid for a day in every respect but its issuer, itself.
TlsContext selfSignedContext() {
  const Key key(EVP_EC_gen("P-256"));
  const Certificate certificate(X509_new());
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 24L * 3600);
  X509_NAME* name = X509_get_subject_name(certificate.get());
  const auto* address = reinterpret_cast<const unsigned char*>("127.0.0.1");
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, address, -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  X509_set_pubkey(certificate.get(), key.get());
  const Extension names(
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1"));
  X509_add_ext(certificate.get(), names.get(), -1);
  X509_sign(certificate.get(), key.get(), EVP_sha256());
  TlsContext context(SSL_CTX_new(TLS_server_method()));
  SSL_CTX_use_certificate(context.get(), certificate.get());
  SSL_CTX_use_PrivateKey(context.get(), key.get());
  return context;
}

TEST_F(CurlHttpSessionTest, AServerThatVouchesForItselfGetsNoRequest) {
  const TlsContext context = selfSignedContext();
  std::atomic<int> bytesReceived = 0;
  Server server([&](Connection& connection) {
    const TlsStream stream(SSL_new(context.get()));
    SSL_set_fd(stream.get(), connection.descriptor());
    if (SSL_accept(stream.get()) != 1) return;
    char byte = 0;
    while (SSL_read(stream.get(), &byte, 1) == 1) ++bytesReceived;
  });
  HttpRequest request;
  request.url = "https://127.0.0.1:" + std::to_string(server.port()) + "/version.txt";
  const HttpResult result = fetch(request);
  EXPECT_FALSE(result.response.has_value());
  EXPECT_NE(errorOf(result).find("certificate"), std::string::npos) << errorOf(result);
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(bytesReceived, 0);
}

TEST_F(CurlHttpSessionTest, AServerWithoutTlsGetsNoRequestMeantForTls) {
  Server server(Server::answering(httpAnswer("plain")));
  HttpRequest request;
  request.url = "https://127.0.0.1:" + std::to_string(server.port()) + "/";
  request.idleTimeout = 0.5;  // the server waits for a request that never ends
  const HttpResult result = fetch(request);
  EXPECT_NE(errorOf(result), "");
  EXPECT_TRUE(server.requests().empty());
}

// On a computer that takes this server for an authority.
class CurlHttpTrustedTls : public CurlHttpSessionTest {
 protected:
  const TlsContext context = selfSignedContext();
  const TemporaryFolder folder;
  OwnMounts mounts;

  void SetUp() override {
    const std::string file = folder / "authorities.pem";
    FILE* stream = std::fopen(file.c_str(), "w");
    ASSERT_NE(stream, nullptr);
    PEM_write_X509(stream, SSL_CTX_get0_certificate(context.get()));
    std::fclose(stream);
    const char* authorities = curl_version_info(CURLVERSION_NOW)->cainfo;
    if (authorities == nullptr || !mounts.putFile(file, authorities)) {
      GTEST_SKIP() << "only the superuser can have authorities of his own";
    }
    session = std::make_unique<CurlHttpSession>(60);  // its thread sees them
  }

  // Answers the one request of a connection.
  [[nodiscard]] Server::Script answering(const std::string& answer) const {
    return [this, answer](Connection& connection) {
      // The client may close as soon as it has read enough, before the goodbye is written.
      sigset_t brokenPipe;
      sigemptyset(&brokenPipe);
      sigaddset(&brokenPipe, SIGPIPE);
      pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);  // of this server's thread
      const TlsStream stream(SSL_new(context.get()));
      SSL_set_fd(stream.get(), connection.descriptor());
      std::array<char, 4096> request;
      if (SSL_accept(stream.get()) != 1) return;
      if (SSL_read(stream.get(), request.data(), static_cast<int>(request.size())) <= 0) return;
      SSL_write(stream.get(), answer.data(), static_cast<int>(answer.size()));
      SSL_shutdown(stream.get());
      connection.waitForClose();
    };
  }
  HttpResult fetchFrom(const Server& server) {
    HttpRequest request;
    request.url = "https://127.0.0.1:" + std::to_string(server.port()) + "/version.txt";
    return fetch(request);
  }
};

TEST_F(CurlHttpTrustedTls, IsAnswered) {
  Server server(answering(httpAnswer("413")));
  const HttpResult result = fetchFrom(server);
  EXPECT_EQ(errorOf(result), "");
  EXPECT_EQ(bodyOf(result), "413");
}

TEST_F(CurlHttpTrustedTls, IsNotLeftForAServerWithoutIt) {
  Server plain(Server::answering(httpAnswer("999")));
  Server server(answering(httpAnswer("", "Location: " + plain.url() + "\r\n", "302 Found")));
  const HttpResult result = fetchFrom(server);
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(plain.connections(), 0);
  EXPECT_NE(errorOf(result), "");
  EXPECT_EQ(bodyOf(result), "");
}

TEST_F(CurlHttpTrustedTls, MayLeadToAnotherThatHasIt) {
  Server other(answering(httpAnswer("413")));
  const std::string url = "https://127.0.0.1:" + std::to_string(other.port()) + "/";
  Server server(answering(httpAnswer("", "Location: " + url + "\r\n", "302 Found")));
  EXPECT_EQ(bodyOf(fetchFrom(server)), "413");
}

}  // namespace
}  // namespace torvane
