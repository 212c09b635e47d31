#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/curl_http_session.h"
#include "support/scripted_http_server.h"

namespace torvane {

class CurlHttpSessionTest : public testing::Test {
 protected:
  using Server = ScriptedHttpServer;
  using Connection = ScriptedHttpServer::Connection;
  static constexpr std::chrono::seconds kPatience{60};

  // A request that may reach this server only.
  static HttpRequest to(const Server& server, std::string_view path = "/") {
    HttpRequest request;
    request.url = server.url(path);
    request.onlyEndpoint = HttpEndpoint{"127.0.0.1", server.port()};
    return request;
  }

  std::future<HttpResult> start(HttpRequest request) {
    auto completed = std::make_shared<std::promise<HttpResult>>();  // a second call would throw
    session->dataTask(std::move(request),
                      [completed](HttpResult result) { completed->set_value(std::move(result)); });
    return completed->get_future();
  }

  static HttpResult await(std::future<HttpResult>& result) {
    if (result.wait_for(kPatience) == std::future_status::ready) return result.get();
    ADD_FAILURE() << "never completed";
    return {};
  }

  HttpResult fetch(HttpRequest request) {
    auto result = start(std::move(request));
    return await(result);
  }

  std::unique_ptr<HttpSession> session = std::make_unique<CurlHttpSession>(60);
};

inline std::string bodyOf(const HttpResult& result) {
  return std::string(asText(result.body));
}

inline int statusOf(const HttpResult& result) {
  return result.response ? result.response->status : 0;
}

inline std::string errorOf(const HttpResult& result) {
  return result.error.value_or("");
}

}  // namespace torvane
