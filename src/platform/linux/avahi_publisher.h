#pragma once

#include <cstdint>
#include <functional>
#include <memory>
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

  // `didFail` gets a sentence for the user, at most once and only before the service was first
  // published; on the publisher's thread or inside the constructor.
  AvahiPublisher(Service service, std::function<void(std::string)> didFail);
  ~AvahiPublisher();
  AvahiPublisher(const AvahiPublisher&) = delete;
  AvahiPublisher& operator=(const AvahiPublisher&) = delete;

 private:
  struct Running;
  std::unique_ptr<Running> running_;
};

}  // namespace torvane
