#include "torvane_ipad/service_browser.h"

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/error.h>
#include <avahi-common/simple-watch.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <memory>

#include "protocol/constants.h"

namespace torvane::ipad {
namespace {

using Clock = std::chrono::steady_clock;

// A helper's second address comes right behind its first.
constexpr auto kAfterwards = std::chrono::milliseconds(100);
constexpr std::size_t kMostHelpers = 1000;  // what anyone may announce is bounded here

bool isLinkLocal(const std::string& address) {
  return address.starts_with("fe80:");
}

// A link-local IPv6 address means nothing without the interface it belongs to.
std::string addressText(const AvahiAddress& address, AvahiIfIndex interface) {
  std::array<char, AVAHI_ADDRESS_STR_MAX> text{};
  avahi_address_snprint(text.data(), text.size(), &address);
  std::string result = text.data();
  std::array<char, IF_NAMESIZE> name{};
  const bool hasName = ::if_indextoname(static_cast<unsigned>(interface), name.data()) != nullptr;
  return isLinkLocal(result) && hasName ? result + "%" + name.data() : result;
}

class Search {
 public:
  explicit Search(const std::function<bool(const std::vector<HelperAddress>&)>& isEnough)
      : isEnough_(isEnough), poll_(avahi_simple_poll_new(), &avahi_simple_poll_free) {}

  NetworkSearch run(std::chrono::milliseconds duration) {
    if (start()) iterateUntil(Clock::now() + duration);
    browser_.reset();
    client_.reset();
    return std::move(result_);
  }

 private:
  bool start() {
    int error = 0;
    client_.reset(avahi_client_new(avahi_simple_poll_get(poll_.get()), AvahiClientFlags{},
                                   &Search::clientChanged, this, &error));
    if (!client_) return fail(error);
    const std::string type = std::string("_") + SERVICE_TYPE + "._tcp";
    browser_.reset(avahi_service_browser_new(client_.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
                                             type.c_str(), nullptr, AvahiLookupFlags{},
                                             &Search::serviceSeen, this));
    return browser_ ? true : fail(avahi_client_errno(client_.get()));
  }

  void iterateUntil(Clock::time_point end) {
    bool isEnding = false;
    while (result_.problem.empty()) {
      if (!isEnding && isEnough_(result_.helpers)) {
        isEnding = true;
        end = std::min(end, Clock::now() + kAfterwards);
      }
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
      if (left <= 0) return;
      const int slice = static_cast<int>(std::min<std::int64_t>(left, 200));
      if (avahi_simple_poll_iterate(poll_.get(), slice) != 0) return;
    }
  }

  bool fail(int error) {
    result_.problem = error == AVAHI_ERR_NO_DAEMON || error == AVAHI_ERR_DBUS_ERROR ||
                              error == AVAHI_ERR_DISCONNECTED
                          ? "the Avahi service is not running"
                          : "the Avahi service does not search";
    return false;
  }

  void add(HelperAddress found) {
    auto& helpers = result_.helpers;
    const auto known = std::ranges::find_if(helpers, [&](const HelperAddress& helper) {
      return helper.host == found.host && helper.port == found.port;
    });
    if (known != helpers.end()) {
      // The same helper on another interface or protocol: IPv4 asks for the least.
      const bool isPlainer = found.address.find(':') == std::string::npos;
      if (isPlainer && known->address.find(':') != std::string::npos) *known = std::move(found);
    } else if (helpers.size() < kMostHelpers) {
      helpers.push_back(std::move(found));
    }
  }

  static void clientChanged(AvahiClient* client, AvahiClientState state, void* self) {
    if (state == AVAHI_CLIENT_FAILURE) static_cast<Search*>(self)->fail(avahi_client_errno(client));
  }

  static void serviceSeen(AvahiServiceBrowser* browser, AvahiIfIndex interface,
                          AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                          const char* type, const char* domain, AvahiLookupResultFlags,
                          void* self) {
    if (event != AVAHI_BROWSER_NEW) return;
    // A resolver frees itself in its callback, or together with the client.
    for (const AvahiProtocol wanted : {AVAHI_PROTO_INET, AVAHI_PROTO_INET6}) {
      avahi_service_resolver_new(avahi_service_browser_get_client(browser), interface, protocol,
                                 name, type, domain, wanted, AvahiLookupFlags{},
                                 &Search::serviceResolved, self);
    }
  }

  static void serviceResolved(AvahiServiceResolver* resolver, AvahiIfIndex interface, AvahiProtocol,
                              AvahiResolverEvent event, const char* name, const char*, const char*,
                              const char* host, const AvahiAddress* address, std::uint16_t port,
                              AvahiStringList*, AvahiLookupResultFlags, void* self) {
    if (event == AVAHI_RESOLVER_FOUND) {
      static_cast<Search*>(self)->add({host, port, addressText(*address, interface), name, ""});
    }
    avahi_service_resolver_free(resolver);
  }

  const std::function<bool(const std::vector<HelperAddress>&)>& isEnough_;
  NetworkSearch result_;
  std::unique_ptr<AvahiSimplePoll, decltype(&avahi_simple_poll_free)> poll_;
  std::unique_ptr<AvahiClient, decltype(&avahi_client_free)> client_{nullptr, &avahi_client_free};
  std::unique_ptr<AvahiServiceBrowser, decltype(&avahi_service_browser_free)> browser_{
      nullptr, &avahi_service_browser_free};
};

}  // namespace

NetworkSearch searchNetwork(
    std::chrono::milliseconds duration,
    const std::function<bool(const std::vector<HelperAddress>&)>& isEnough) {
  return Search(isEnough).run(duration);
}

}  // namespace torvane::ipad
