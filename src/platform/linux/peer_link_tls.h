#pragma once

#include <boost/asio/ssl/context.hpp>
#include <memory>
#include <string>

namespace torvane {

// The settings of TLS that all connections share.
struct LinkTls {
  boost::asio::ssl::context context{boost::asio::ssl::context::tls_server};
};

// None when the certificate or its key cannot be used.
[[nodiscard]] std::shared_ptr<LinkTls> makeLinkTls(const std::string& pem);

}  // namespace torvane
