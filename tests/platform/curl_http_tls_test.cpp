// A server's certificate is checked against the system's authorities.

#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <atomic>
#include <memory>

#include "platform/curl_http_session_fixture.h"

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
using TlsContext = std::unique_ptr<SSL_CTX, Freeing<SSL_CTX_free>>;
using TlsStream = std::unique_ptr<SSL, Freeing<SSL_free>>;

// Valid for a day in every respect but its issuer: itself.
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

}  // namespace
}  // namespace torvane
