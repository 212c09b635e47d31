#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ssl/context.hpp>
#include <memory>

#include "torvane_ipad/peer_connection.h"

namespace torvane::ipad {

// A connection over WebSocket and TLS that lives on the context's thread. What is costly to
// compile stays in one file.
[[nodiscard]] std::shared_ptr<PeerConnection> startWebSocketConnection(
    boost::asio::io_context& context, boost::asio::ssl::context& tls, ConnectionSettings settings,
    DeviceIdentity identity, std::weak_ptr<ConnectionHandler> handler);

}  // namespace torvane::ipad
