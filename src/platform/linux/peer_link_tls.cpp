#include "platform/linux/peer_link_tls.h"

#include <boost/asio/buffer.hpp>

namespace torvane {

namespace ssl = boost::asio::ssl;

std::shared_ptr<LinkTls> makeLinkTls(const std::string& pem) {
  auto tls = std::make_shared<LinkTls>();
  SSL_CTX* native = tls->context.native_handle();
  SSL_CTX_set_min_proto_version(native, TLS1_3_VERSION);
  // No resumption: each connection shows the certificate that its proof is bound to.
  SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
  SSL_CTX_set_num_tickets(native, 0);
  boost::system::error_code keyError;
  boost::system::error_code chainError;
  tls->context.use_private_key(boost::asio::buffer(pem), ssl::context::pem, keyError);
  tls->context.use_certificate_chain(boost::asio::buffer(pem), chainError);
  return keyError || chainError ? nullptr : tls;
}

}  // namespace torvane
