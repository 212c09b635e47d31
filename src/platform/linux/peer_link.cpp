#include "platform/linux/peer_link.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <cstdlib>
#include <thread>

#include "platform/linux/own_addresses.h"
#include "platform/linux/peer_link_server.h"

namespace torvane {
namespace {

class LinkAdvertiser final : public Advertiser {
 public:
  LinkAdvertiser(std::shared_ptr<LinkMailbox> mailbox, PeerAdvertisement advertisement)
      : mailbox_(std::move(mailbox)), advertisement_(std::move(advertisement)) {}
  ~LinkAdvertiser() override { LinkAdvertiser::stop(); }
  LinkAdvertiser(const LinkAdvertiser&) = delete;
  LinkAdvertiser& operator=(const LinkAdvertiser&) = delete;

  void start() override {
    mailbox_->post([a = advertisement_](PeerLinkServer& server) { server.startAdvertising(a); });
  }
  void stop() override {
    mailbox_->post([a = advertisement_](PeerLinkServer& server) { server.stopAdvertising(a); });
  }

 private:
  const std::shared_ptr<LinkMailbox> mailbox_;
  const PeerAdvertisement advertisement_;
};

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

PeerLinkOptions PeerLinkOptions::fromEnvironment() {
  PeerLinkOptions options;
  std::string data = environment("XDG_DATA_HOME");
  if (data.empty()) data = environment("HOME") + "/.local/share";
  options.dataFolder = data + "/torvane";
  const std::string runtime = environment("XDG_RUNTIME_DIR");
  if (!runtime.empty()) options.runtimeFolder = runtime + "/torvane";
  return options;
}

struct WebSocketPeerLink::Running {
  explicit Running(PeerLinkOptions options)
      : longestMessage(PeerOutbox::longestMessage(options.caps.unsentBytes)),
        server(loop, mailbox, std::move(options)) {
    mailbox->open(loop, server);
    thread = std::thread([this] { loop.run(); });
  }

  ~Running() {
    mailbox->post([this](PeerLinkServer& s) {
      s.shutDown();
      work.reset();
    });
    mailbox->close();
    thread.join();
  }

  const std::size_t longestMessage;
  boost::asio::io_context loop{1};
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work{
      loop.get_executor()};
  std::shared_ptr<LinkMailbox> mailbox = std::make_shared<LinkMailbox>();
  PeerLinkServer server;
  std::thread thread;
};

WebSocketPeerLink::WebSocketPeerLink(PeerLinkOptions options)
    : running_(std::make_unique<Running>(std::move(options))) {}

WebSocketPeerLink::~WebSocketPeerLink() = default;

PeerID WebSocketPeerLink::makePeerID(const std::string& displayName) {
  return {running_->server.nextToken(), displayName};
}

std::shared_ptr<PeerSession> WebSocketPeerLink::makeSession(const PeerID& /*self*/,
                                                            PeerSessionDelegate& delegate) {
  return std::make_shared<LinkSession>(running_->mailbox, delegate, running_->longestMessage);
}

std::unique_ptr<Advertiser> WebSocketPeerLink::makeAdvertiser(
    const PeerID& self, const std::string& serviceType,
    std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate) {
  return std::make_unique<LinkAdvertiser>(
      running_->mailbox, PeerAdvertisement{self.token, self.displayName, serviceType,
                                           std::move(registered), &delegate});
}

std::vector<std::string> WebSocketPeerLink::addresses() const {
  const std::uint16_t port = running_->server.port();
  return port != 0 ? ownAddresses(port) : std::vector<std::string>();
}

}  // namespace torvane
