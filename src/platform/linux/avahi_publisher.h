#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace torvane {

// One service on the local network (DNS-SD), from construction to destruction, through Avahi's
// daemon on a thread of its own. It takes another name when its own is in use, comes back after
// the daemon was restarted, and goes on trying while the daemon or the system bus is missing.
class AvahiPublisher {
 public:
  struct Service {
    std::string name;
    std::string type;  // "_torvane._tcp"
    std::uint16_t port;
  };

  // Gets a sentence for the user when the service cannot be published, or is so no longer, and none
  // when that has passed. On the publisher's thread or inside the constructor.
  using Report = std::function<void(std::optional<std::string> problem)>;

  AvahiPublisher(Service service, Report report);
  ~AvahiPublisher();
  AvahiPublisher(const AvahiPublisher&) = delete;
  AvahiPublisher& operator=(const AvahiPublisher&) = delete;

 private:
  struct Running;
  std::unique_ptr<Running> running_;
};

}  // namespace torvane
