#include "engine/engine_requests.h"

#include "protocol/constants.h"

namespace torvane {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr double kTotalTimeout = 10;
constexpr std::uint64_t kResponseLimit = std::uint64_t{32} << 20;

}  // namespace

std::string engineURL(std::string_view path) {
  return "http://" + std::string(kLoopback) + ":" + std::to_string(PORT) + std::string(path);
}

HttpRequest engineRequest(std::string_view path, double idleTimeout) {
  HttpRequest request;
  request.url = engineURL(path);
  request.idleTimeout = idleTimeout;
  request.totalTimeout = kTotalTimeout;
  request.maxResponseBytes = kResponseLimit;
  request.onlyEndpoint = HttpEndpoint{kLoopback, PORT};
  return request;
}

}  // namespace torvane
