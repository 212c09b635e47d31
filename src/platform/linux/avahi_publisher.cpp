#include "platform/linux/avahi_publisher.h"

#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/alternative.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>
#include <avahi-common/thread-watch.h>
#include <avahi-common/timeval.h>

#include <utility>

#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr unsigned kRetryMilliseconds = 3000;
constexpr std::size_t kMaxServiceName = 63;  // RFC 6763, section 4.1.1

std::string failureText(int error) {
  switch (error) {
    case AVAHI_ERR_NO_DAEMON:
    case AVAHI_ERR_DISCONNECTED:
    case AVAHI_ERR_DBUS_ERROR:
    case AVAHI_ERR_NOT_SUPPORTED:
      return "Other devices cannot find this computer: the Avahi service is not running.";
    default:
      return std::string("Other devices cannot find this computer: the Avahi service reports “") +
             avahi_strerror(error) + "”.";
  }
}

}  // namespace

// Everything runs on the poll's thread once that is started, and its callbacks never overlap.
struct AvahiPublisher::Running {
  Running(Service wanted, Report told)
      : service(std::move(wanted)), report(std::move(told)), poll(avahi_threaded_poll_new()) {
    service.name = utf8Prefix(service.name, kMaxServiceName);
    if (poll == nullptr) {
      fail(AVAHI_ERR_NO_MEMORY);
      return;
    }
    // The first connection is made on the thread too: a bus that hangs holds nobody up.
    retryAfter(0);
    avahi_threaded_poll_start(poll);
  }

  ~Running() {
    if (poll == nullptr) return;
    avahi_threaded_poll_stop(poll);
    forgetClient();
    if (retry != nullptr) avahi_threaded_poll_get(poll)->timeout_free(retry);
    avahi_threaded_poll_free(poll);
  }

  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  void fail(int error) { tell(failureText(error)); }

  // Each change once.
  void tell(const std::optional<std::string>& now) {
    if (std::exchange(problem, now) != now) report(now);
  }

  void retryAfter(unsigned milliseconds) {
    const AvahiPoll* api = avahi_threaded_poll_get(poll);
    timeval when{};
    avahi_elapse_time(&when, milliseconds, 0);
    if (retry != nullptr) return api->timeout_update(retry, &when);
    retry = api->timeout_new(
        api, &when, [](AvahiTimeout*, void* self) { static_cast<Running*>(self)->connect(); },
        this);
  }

  void connect() {
    avahi_threaded_poll_get(poll)->timeout_update(retry, nullptr);
    forgetClient();
    int error = 0;
    client = avahi_client_new(avahi_threaded_poll_get(poll), AVAHI_CLIENT_NO_FAIL, didChangeState,
                              this, &error);
    if (client != nullptr) return;
    fail(error);
    retryAfter(kRetryMilliseconds);
  }

  void forgetClient() {
    group = nullptr;  // it is the client's
    if (client != nullptr) avahi_client_free(std::exchange(client, nullptr));
  }

  static void didChangeState(AvahiClient* client, AvahiClientState state, void* self) {
    auto& running = *static_cast<Running*>(self);
    running.client = client;  // the first call comes before avahi_client_new returns
    switch (state) {
      case AVAHI_CLIENT_S_RUNNING:
        return running.publish();
      case AVAHI_CLIENT_S_REGISTERING:
      case AVAHI_CLIENT_S_COLLISION:
        // The host itself is about to get another name.
        if (running.group != nullptr) avahi_entry_group_reset(running.group);
        return;
      case AVAHI_CLIENT_CONNECTING:
        running.group = nullptr;
        return running.fail(AVAHI_ERR_NO_DAEMON);
      case AVAHI_CLIENT_FAILURE:
        running.fail(avahi_client_errno(client));
        return running.retryAfter(kRetryMilliseconds);
    }
  }

  static void didChangeGroup(AvahiEntryGroup* group, AvahiEntryGroupState state, void* self) {
    auto& running = *static_cast<Running*>(self);
    running.group = group;
    if (state == AVAHI_ENTRY_GROUP_ESTABLISHED) running.tell(std::nullopt);
    if (state == AVAHI_ENTRY_GROUP_COLLISION) running.publishUnderAnotherName();
    if (state == AVAHI_ENTRY_GROUP_FAILURE) running.fail(avahi_client_errno(running.client));
  }

  void publish() {
    if (group == nullptr) group = avahi_entry_group_new(client, didChangeGroup, this);
    if (group == nullptr) return fail(avahi_client_errno(client));
    if (avahi_entry_group_is_empty(group) == 0) return;
    const int added = avahi_entry_group_add_service(
        group, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, AvahiPublishFlags{}, service.name.c_str(),
        service.type.c_str(), nullptr, nullptr, service.port, nullptr);
    if (added == AVAHI_ERR_COLLISION) return publishUnderAnotherName();
    const int committed = added == AVAHI_OK ? avahi_entry_group_commit(group) : added;
    if (committed != AVAHI_OK) fail(committed);
  }

  void publishUnderAnotherName() {
    char* other = avahi_alternative_service_name(service.name.c_str());
    if (other == nullptr) return fail(AVAHI_ERR_NO_MEMORY);
    service.name = other;
    avahi_free(other);
    avahi_entry_group_reset(group);
    publish();
  }

  Service service;
  Report report;
  std::optional<std::string> problem;
  AvahiThreadedPoll* poll;
  AvahiTimeout* retry = nullptr;
  AvahiClient* client = nullptr;
  AvahiEntryGroup* group = nullptr;
};

AvahiPublisher::AvahiPublisher(Service service, Report report)
    : running_(std::make_unique<Running>(std::move(service), std::move(report))) {}

AvahiPublisher::~AvahiPublisher() = default;

}  // namespace torvane
