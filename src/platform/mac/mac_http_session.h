#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <memory>
#include <tuple>

#include "ports/http_session.h"

@class TorvaneTransfers;

namespace torvane {

// Requests go through sessions of the system that keep nothing on disk: one for each total
// time-out, which the system knows for whole sessions only, and for each of pinned and free. Each
// session has connections of its own, so a few more of them keep the lanes from waiting for one
// another.
class MacHttpSession final : public HttpSession {
 public:
  explicit MacHttpSession(double idleTimeout) : idleTimeout_(idleTimeout) {}
  ~MacHttpSession() override;
  MacHttpSession(const MacHttpSession&) = delete;
  MacHttpSession& operator=(const MacHttpSession&) = delete;

  void dataTask(HttpRequest request, HttpCompletion completion) override;

 private:
  struct Channel {
    NSURLSession* session;
    TorvaneTransfers* transfers;
  };
  // Whether it is pinned, whether bodies go to files, total time-out, lane.
  using ChannelKey = std::tuple<bool, bool, double, std::uint64_t>;

  Channel& channelFor(const HttpRequest& request);
  [[nodiscard]] Channel makeChannel(bool isPinned, double totalTimeout) const;

  double idleTimeout_;
  std::map<ChannelKey, Channel> channels_;
};

class MacHttpSessions final : public HttpSessions {
 public:
  HttpSession& shared() override { return shared_; }
  [[nodiscard]] std::unique_ptr<HttpSession> makeEphemeral(double idleTimeout) override {
    return std::make_unique<MacHttpSession>(idleTimeout);
  }

 private:
  static constexpr double kSystemIdleTimeout = 60;
  MacHttpSession shared_{kSystemIdleTimeout};
};

}  // namespace torvane
