// Time-outs and the longest answer.

#include <netinet/in.h>
#include <sys/socket.h>

#include <limits>

#include "platform/curl_http_session_fixture.h"
#include "platform/posix/unique_fd.h"

namespace torvane {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

class CurlHttpLimitsTest : public CurlHttpSessionTest {
 protected:
  // Runs the request and checks that it times out neither too early nor hopelessly late.
  HttpResult expectTimeout(HttpRequest request, std::chrono::milliseconds least) {
    const auto start = SteadyClock::now();
    HttpResult result = fetch(std::move(request));
    const auto took = SteadyClock::now() - start;
    EXPECT_EQ(errorOf(result), "The request timed out.");
    EXPECT_TRUE(result.body.empty());
    EXPECT_GE(took, least);
    EXPECT_LT(took, kPatience / 2);
    return result;
  }

  static void drip(Connection& connection, int pieces, std::chrono::milliseconds pause) {
    for (int i = 0; i < pieces; ++i) {
      if (!connection.staysQuietFor(pause) || !connection.send("x")) return;
    }
  }
};

TEST_F(CurlHttpLimitsTest, ASilentServerTimesOut) {
  Server server([](Connection& connection) { connection.waitForClose(); });
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  EXPECT_FALSE(expectTimeout(request, 200ms).response.has_value());
}

TEST_F(CurlHttpLimitsTest, TheSessionsTimeoutServesRequestsWithoutOne) {
  Server server([](Connection& connection) { connection.waitForClose(); });
  session = std::make_unique<CurlHttpSession>(0.2);
  HttpRequest request = to(server);
  request.idleTimeout = 0;
  expectTimeout(request, 200ms);
}

TEST_F(CurlHttpLimitsTest, AConnectionThatIsNotAcceptedTimesOut) {
  const UniqueFd listener(::socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(::bind(listener.get(), generic, size), 0);
  ASSERT_EQ(::listen(listener.get(), 0), 0);
  ASSERT_EQ(::getsockname(listener.get(), generic, &size), 0);
  std::vector<UniqueFd> fillers;  // more than the queue holds
  for (int i = 0; i < 4; ++i) {
    fillers.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    ::connect(fillers.back().get(), generic, size);
  }
  HttpRequest request;
  request.onlyEndpoint = HttpEndpoint{"127.0.0.1", ntohs(address.sin_port)};
  request.url = "http://127.0.0.1:" + std::to_string(request.onlyEndpoint->port) + "/";
  request.idleTimeout = 0.2;
  EXPECT_FALSE(expectTimeout(request, 200ms).response.has_value());
}

TEST_F(CurlHttpLimitsTest, TheHeaderThatCameIsDeliveredWithTheTimeout) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\nContent-Length: 10\r\n\r\nhalf");
    connection.waitForClose();
  });
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  const HttpResult result = expectTimeout(request, 200ms);
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_EQ(result.response->contentType, "a/b");
}

TEST_F(CurlHttpLimitsTest, HalfAHeaderIsNoResponse) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n");
    connection.waitForClose();
  });
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  EXPECT_FALSE(expectTimeout(request, 200ms).response.has_value());
}

TEST_F(CurlHttpLimitsTest, ProgressKeepsTheIdleTimeoutAway) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 15\r\n\r\n");
    drip(connection, 15, 100ms);
  });
  HttpRequest request = to(server);
  request.idleTimeout = 1;
  const HttpResult result = fetch(request);
  EXPECT_EQ(errorOf(result), "");
  EXPECT_EQ(bodyOf(result), std::string(15, 'x'));
}

TEST_F(CurlHttpLimitsTest, AnUploadIsProgressToo) {
  static constexpr std::size_t kUpload = 16 * 1024 * 1024;
  Server server([](Connection& connection) {
    connection.readSlowly(kUpload, kUpload / 16, 100ms);
    connection.send(httpAnswer("got it"));
    connection.waitForClose();
  });
  HttpRequest request = to(server);
  request.method = "PUT";
  request.body.assign(kUpload, 'x');
  request.idleTimeout = 1;
  const auto start = SteadyClock::now();
  EXPECT_EQ(bodyOf(fetch(request)), "got it");
  EXPECT_GT(SteadyClock::now() - start, 1s);
}

TEST_F(CurlHttpLimitsTest, TheTotalTimeEndsAServerThatDrips) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
    drip(connection, 100'000, 20ms);
  });
  HttpRequest request = to(server);
  request.totalTimeout = 0.5;
  EXPECT_EQ(statusOf(expectTimeout(request, 500ms)), 200);
}

TEST_F(CurlHttpLimitsTest, ARequestThatWaitsForItsTurnTimesOutToo) {
  Server server([](Connection& connection) { connection.waitForClose(); });
  std::vector<std::future<HttpResult>> held;
  for (int i = 0; i < 32; ++i) held.push_back(start(to(server)));
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  expectTimeout(request, 200ms);
  EXPECT_EQ(held.front().wait_for(0s), std::future_status::timeout);
}

TEST_F(CurlHttpLimitsTest, ATimeoutLeavesTheSessionUsable) {
  Server server([](Connection& connection) {
    if (connection.number == 0) return connection.waitForClose();
    Server::answering(httpAnswer("x"))(connection);
  });
  HttpRequest request = to(server);
  request.idleTimeout = 0.2;
  expectTimeout(request, 200ms);
  EXPECT_EQ(bodyOf(fetch(to(server))), "x");
}

TEST_F(CurlHttpLimitsTest, OddTimeoutsAreTakenAsNone) {
  Server server(Server::answering(httpAnswer("x")));
  for (const double odd : {-1.0, 0.0, 1e300, std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()}) {
    HttpRequest request = to(server);
    request.idleTimeout = odd;
    request.totalTimeout = odd;
    EXPECT_EQ(bodyOf(fetch(request)), "x") << odd;
  }
}

TEST_F(CurlHttpLimitsTest, ALongerBodyThanAllowedIsAnError) {
  Server server(Server::answering(httpAnswer("12345678901", "Content-Type: a/b\r\n")));
  HttpRequest request = to(server);
  request.maxResponseBytes = 10;
  const HttpResult result = fetch(request);
  EXPECT_EQ(errorOf(result), "The response is longer than 10 bytes.");
  EXPECT_FALSE(result.response.has_value());  // nothing of it is passed on
  EXPECT_TRUE(result.body.empty());
}

TEST_F(CurlHttpLimitsTest, ABodyOfTheAllowedLengthIsNone) {
  Server server(Server::answering(httpAnswer("1234567890")));
  HttpRequest request = to(server);
  request.maxResponseBytes = 10;
  EXPECT_EQ(bodyOf(fetch(request)), "1234567890");
}

TEST_F(CurlHttpLimitsTest, AnEndlessBodyIsCut) {
  for (const char* header : {"Transfer-Encoding: chunked\r\n", ""}) {
    Server server([header](Connection& connection) {
      connection.readRequest();
      connection.send("HTTP/1.1 200 OK\r\n" + std::string(header) + "\r\n");
      while (connection.send("4\r\nabcd\r\n")) {
      }
    });
    HttpRequest request = to(server);
    request.maxResponseBytes = 100'000;
    const HttpResult result = fetch(request);
    EXPECT_EQ(errorOf(result), "The response is longer than 100000 bytes.");
    EXPECT_TRUE(result.body.empty());
  }
}

TEST_F(CurlHttpLimitsTest, AnEndlessHeaderIsCut) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n");
    while (connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
    }
  });
  const HttpResult result = fetch(to(server));
  EXPECT_NE(errorOf(result), "");
  EXPECT_FALSE(result.response.has_value());
}

}  // namespace
}  // namespace torvane
