// Connections that break and servers that speak something else.

#include "platform/curl_http_session_fixture.h"

namespace torvane {
namespace {

using CurlHttpFailureTest = CurlHttpSessionTest;

TEST_F(CurlHttpFailureTest, AConnectionClosedInsideTheBodyIsAnError) {
  for (const char* rest :
       {"Content-Length: 100\r\n\r\nhalf", "Transfer-Encoding: chunked\r\n\r\n64\r\nhalf"}) {
    Server server([rest](Connection& connection) {
      connection.readRequest();
      connection.send("HTTP/1.1 200 OK\r\n" + std::string(rest));
    });
    const HttpResult result = fetch(to(server));
    EXPECT_NE(errorOf(result), "");
    EXPECT_EQ(statusOf(result), 200);
    EXPECT_TRUE(result.body.empty());
  }
}

TEST_F(CurlHttpFailureTest, AnUnreachableServerIsAnErrorWithoutResponse) {
  HttpRequest request;
  {
    Server closed([](Connection&) {});
    request = to(closed);
  }
  const HttpResult result = fetch(request);
  EXPECT_FALSE(result.response.has_value());
  EXPECT_TRUE(result.body.empty());
  EXPECT_NE(errorOf(result).find("127.0.0.1"), std::string::npos) << errorOf(result);
  EXPECT_TRUE(errorOf(result).ends_with('.')) << errorOf(result);
}

TEST_F(CurlHttpFailureTest, WhatIsNotHttpIsAnError) {
  for (const char* answer :
       {"SSH-2.0-OpenSSH_9.2\r\n", "\r\n\r\n", "HTTP/9.9 200 OK\r\n\r\n", ""}) {
    Server server([answer](Connection& connection) {
      connection.readRequest();
      connection.send(answer);
    });
    const HttpResult result = fetch(to(server));
    EXPECT_NE(errorOf(result), "") << answer;
    EXPECT_FALSE(result.response.has_value()) << answer;
  }
}

TEST_F(CurlHttpFailureTest, ASwitchOfProtocolsThatNobodyAskedForDoesNotHang) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n");
    connection.waitForClose();
  });
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  EXPECT_NE(errorOf(fetch(request)), "");
}

// The first request leaves a connection; the server drops it when the second arrives.
ScriptedHttpServer::Script droppingTheSecondRequest() {
  return [](ScriptedHttpServer::Connection& connection) {
    if (!connection.readRequest()) return;
    connection.send(httpAnswer("x"));
    if (connection.number == 0) {
      connection.readRequest();
      return;
    }
    connection.waitForClose();
  };
}

TEST_F(CurlHttpFailureTest, APostIsNeverSentTwice) {
  Server server(droppingTheSecondRequest());
  EXPECT_EQ(bodyOf(fetch(to(server))), "x");
  HttpRequest request = to(server);
  request.method = "POST";
  request.body = toBytes("next slide");
  const HttpResult result = fetch(request);
  EXPECT_EQ(errorOf(result), "The connection was lost before an answer came.");
  EXPECT_FALSE(result.response.has_value());
  EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(CurlHttpFailureTest, AGetOnAConnectionThatTheServerDroppedIsSentAgain) {
  Server server(droppingTheSecondRequest());
  EXPECT_EQ(bodyOf(fetch(to(server))), "x");
  EXPECT_EQ(bodyOf(fetch(to(server))), "x");
  EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(CurlHttpFailureTest, AConnectionThatWasClosedInBetweenIsReplaced) {
  std::promise<void> closed;
  Server server([&](Connection& connection) {
    connection.readRequest();
    connection.send(httpAnswer("x"));
    connection.close();
    if (connection.number == 0) closed.set_value();
  });
  HttpRequest request = to(server);
  request.method = "POST";
  EXPECT_EQ(bodyOf(fetch(request)), "x");
  closed.get_future().wait();
  EXPECT_EQ(bodyOf(fetch(request)), "x");
  EXPECT_EQ(server.connections(), 2);
}

}  // namespace
}  // namespace torvane
