#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/steady_timer.hpp>
#include <future>

#include "torvane_ipad/peer_connection.h"
#include "torvane_ipad/websocket_connection.h"

namespace torvane::ipad {
namespace asio = boost::asio;
namespace {

// For the farewells of the last connections.
constexpr auto kFarewellTime = std::chrono::seconds(2);

}  // namespace

struct PeerNetwork::Io {
  asio::io_context context{1};
  asio::ssl::context tls{asio::ssl::context::tlsv13_client};
  asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
  std::future<void> finished;
};

PeerNetwork::PeerNetwork() : io_(std::make_unique<Io>()) {
  // Trust is decided by the certificate's fingerprint, which each connection compares.
  io_->tls.set_verify_mode(asio::ssl::verify_none);
  io_->finished = std::async(std::launch::async, [&context = io_->context] { context.run(); });
}

PeerNetwork::~PeerNetwork() {
  io_->work.reset();
  if (io_->finished.wait_for(kFarewellTime) != std::future_status::ready) io_->context.stop();
  io_->finished.wait();
}

std::shared_ptr<PeerConnection> PeerNetwork::connect(ConnectionSettings settings,
                                                     DeviceIdentity identity,
                                                     std::weak_ptr<ConnectionHandler> handler) {
  return startWebSocketConnection(io_->context, io_->tls, std::move(settings), std::move(identity),
                                  std::move(handler));
}

void PeerNetwork::callAfter(std::chrono::nanoseconds delay, std::function<void()> action) {
  auto timer = std::make_shared<asio::steady_timer>(io_->context, delay);
  timer->async_wait([timer, action = std::move(action)](boost::system::error_code error) {
    if (!error) action();
  });
}

}  // namespace torvane::ipad
