// Where a request may go, and what may not get onto its connection.

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdlib>
#include <vector>

#include "platform/curl_http_session_fixture.h"
#include "platform/linux/curl_address.h"
#include "platform/linux/http_text.h"

namespace torvane {
namespace {

class CurlHttpPinTest : public CurlHttpSessionTest {
 protected:
  // The engine's address with a text put behind it, as a forwarded request has it.
  HttpRequest behindAddress(const std::string& text) {
    HttpRequest request = to(engine);
    request.url = engine.url("") + text;
    return request;
  }

  static bool isRefused(const HttpResult& result) {
    return result.error && !result.error->empty() && !result.response && result.body.empty();
  }

  Server engine{Server::answering(httpAnswer("engine"))};
  Server bystander{Server::answering(httpAnswer("bystander"))};
};

TEST_F(CurlHttpPinTest, NothingAfterTheAddressLeadsElsewhere) {
  const std::string other = std::to_string(bystander.port());
  for (const std::string& text : std::vector<std::string>{
           "@evil/x", "\\@evil", "@[::1]:22/", "@127.0.0.1:" + other + "/", "1/", "0", "00000/",
           ".evil.example/", "@localhost:" + other + "/", "\\@127.0.0.1:" + other + "/",
           "/@" + other + "\r\nHost: evil", ":" + other + "/", "%40evil/", "@", " @evil/", "-1/"}) {
    EXPECT_TRUE(isRefused(fetch(behindAddress(text)))) << text;
  }
  EXPECT_EQ(engine.connections(), 0);
  EXPECT_EQ(bystander.connections(), 0);
}

TEST_F(CurlHttpPinTest, AnotherAddressIsRefusedWithoutALookUp) {
  const std::string port = std::to_string(engine.port());
  const std::string other = std::to_string(bystander.port());
  for (const std::string& url : std::vector<std::string>{
           "http://localhost:" + port + "/", "http://127.0.0.2:" + port + "/",
           "http://[::1]:" + port + "/", "http://[::ffff:127.0.0.1]:" + port + "/",
           "http://127.0.0.1:" + other + "/", "http://127.0.0.1/",
           "https://127.0.0.1:" + port + "/", "ftp://127.0.0.1:" + port + "/", "file:///etc/passwd",
           "gopher://127.0.0.1:" + port + "/", "http://user@127.0.0.1:" + port + "/",
           "127.0.0.1:" + port, ""}) {
    HttpRequest request = to(engine);
    request.url = url;
    EXPECT_TRUE(isRefused(fetch(request))) << url;
  }
  EXPECT_EQ(engine.connections() + bystander.connections(), 0);
}

TEST_F(CurlHttpPinTest, AnAddressThatWasRightForOneEndpointIsWrongForAnother) {
  HttpRequest request = to(engine);
  EXPECT_EQ(bodyOf(fetch(request)), "engine");
  request.onlyEndpoint->port = bystander.port();
  EXPECT_TRUE(isRefused(fetch(request)));
  EXPECT_EQ(bodyOf(fetch(to(engine))), "engine");
}

TEST_F(CurlHttpPinTest, AnAddressThatMayNameAUserMayNotWhenItIsPinned) {
  HttpRequest request;
  request.url = "http://user@127.0.0.1:" + std::to_string(engine.port()) + "/";
  EXPECT_EQ(bodyOf(fetch(request)), "engine");
  request.onlyEndpoint = to(engine).onlyEndpoint;
  EXPECT_TRUE(isRefused(fetch(request)));
}

TEST_F(CurlHttpPinTest, TheErrorNamesTheEndpoint) {
  HttpRequest request = to(engine);
  request.url = "http://evil.example/";
  EXPECT_EQ(errorOf(fetch(request)), "Could not connect: the address leads away from 127.0.0.1:" +
                                         std::to_string(engine.port()) + ".");
}

TEST_F(CurlHttpPinTest, TheSocketIsHeldToTheEndpointToo) {
  const auto address = [](const char* host, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    ::inet_pton(AF_INET, host, &result.sin_addr);
    return result;
  };
  const auto allows = [](const auto& given, const HttpEndpoint& endpoint) {
    return isEndpoint(reinterpret_cast<const sockaddr&>(given), endpoint);
  };
  EXPECT_TRUE(allows(address("127.0.0.1", 8484), {"127.0.0.1", 8484}));
  EXPECT_FALSE(allows(address("127.0.0.1", 8485), {"127.0.0.1", 8484}));
  EXPECT_FALSE(allows(address("127.0.0.2", 8484), {"127.0.0.1", 8484}));
  EXPECT_FALSE(allows(address("127.0.0.1", 8484), {"localhost", 8484}));
  EXPECT_FALSE(allows(address("127.0.0.1", 8484), {"::1", 8484}));
  sockaddr_in6 loopback{};
  loopback.sin6_family = AF_INET6;
  loopback.sin6_port = htons(8484);
  loopback.sin6_addr = in6addr_loopback;
  EXPECT_TRUE(allows(loopback, {"::1", 8484}));
  EXPECT_FALSE(allows(loopback, {"127.0.0.1", 8484}));
  EXPECT_FALSE(allows(sockaddr_in6{}, {"::1", 8484}));
}

TEST_F(CurlHttpPinTest, AnEndpointThatIsNoNumericAddressIsNeverReached) {
  HttpRequest request = to(engine);
  request.url = "http://localhost:" + std::to_string(engine.port()) + "/";
  request.onlyEndpoint->address = "localhost";
  EXPECT_TRUE(isRefused(fetch(request)));
  EXPECT_EQ(engine.connections(), 0);
}

TEST_F(CurlHttpPinTest, NoRedirectIsFollowed) {
  Server redirecting(Server::answering(
      httpAnswer("moved", "Location: " + bystander.url("/x") + "\r\n", "302 Found")));
  const HttpResult result = fetch(to(redirecting));
  EXPECT_EQ(statusOf(result), 302);
  EXPECT_EQ(bodyOf(result), "moved");
  EXPECT_EQ(bystander.connections(), 0);
}

TEST_F(CurlHttpPinTest, NoProxyOfTheEnvironmentIsAsked) {
  for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
    ::setenv(name, bystander.url("").c_str(), 1);
    EXPECT_EQ(bodyOf(fetch(to(engine))), "engine") << name;
    ::unsetenv(name);
  }
  EXPECT_EQ(bystander.connections(), 0);
}

TEST_F(CurlHttpPinTest, AMethodThatIsNoTokenIsRefused) {
  for (const std::string& method :
       {std::string(), std::string("GET /x HTTP/1.1\r\nX:"), std::string("GE T"),
        std::string("GET\n"), std::string("GET\0", 4), std::string("G\xc3\x89T"),
        std::string("GET:"), std::string("\x7f")}) {
    HttpRequest request = to(engine);
    request.method = method;
    EXPECT_EQ(errorOf(fetch(request)), "The request's method is not an HTTP method.");
  }
  EXPECT_EQ(engine.connections(), 0);
}

TEST_F(CurlHttpPinTest, AContentTypeWithControlCharactersIsRefused) {
  for (const std::string& type : {std::string("a/b\r\nX-Injected: 1"), std::string("a/b\n"),
                                  std::string("a\0b", 3), std::string("a/b\x7f")}) {
    HttpRequest request = to(engine);
    request.method = "POST";
    request.contentType = type;
    request.body = toBytes("x");
    EXPECT_EQ(errorOf(fetch(request)), "The request's content type holds control characters.");
  }
  EXPECT_EQ(engine.connections(), 0);
}

TEST_F(CurlHttpPinTest, AUrlWithControlCharactersIsRefused) {
  for (const std::string& path : {std::string("/a\r\nX: 1"), std::string("/a\nb"),
                                  std::string("/a\0b", 4), std::string("/\x7f")}) {
    EXPECT_TRUE(isRefused(fetch(behindAddress(path))));
  }
  EXPECT_TRUE(isRefused(fetch(behindAddress("/a b"))));
  EXPECT_TRUE(isRefused(fetch(behindAddress("/x HTTP/1.1"))));
  EXPECT_EQ(engine.connections(), 0);
}

TEST_F(CurlHttpPinTest, ARefusalLeavesTheSessionUsable) {
  EXPECT_TRUE(isRefused(fetch(behindAddress("@evil/"))));
  EXPECT_EQ(bodyOf(fetch(to(engine))), "engine");
}

// Without an endpoint the session is an ordinary client.
class CurlHttpRedirectTest : public CurlHttpSessionTest {
 protected:
  static HttpRequest freely(const std::string& url) {
    HttpRequest request;
    request.url = url;
    return request;
  }
};

TEST_F(CurlHttpRedirectTest, FollowsARedirect) {
  Server target(Server::answering(httpAnswer("target", "Content-Type: t/t\r\n")));
  Server server(Server::answering(httpAnswer(
      "moved", "Content-Type: m/m\r\nLocation: " + target.url("/there") + "\r\n", "302 Found")));
  const HttpResult result = fetch(freely(server.url()));
  EXPECT_EQ(bodyOf(result), "target");
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_EQ(result.response->contentType, "t/t");
  EXPECT_TRUE(target.requests().front().starts_with("GET /there "));
}

TEST_F(CurlHttpRedirectTest, TheNextRequestStartsWhereTheFirstDid) {
  Server target(Server::answering(httpAnswer("target")));
  Server server(
      Server::answering(httpAnswer("", "Location: " + target.url("/there") + "\r\n", "302 Found")));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(bodyOf(fetch(freely(server.url("/here")))), "target");
  EXPECT_EQ(server.requests().size(), 3U);
  EXPECT_EQ(target.requests().size(), 3U);
}

TEST_F(CurlHttpRedirectTest, GivesUpAfterTenRedirects) {
  Server server(Server::answering(httpAnswer("", "Location: /again\r\n", "302 Found")));
  const HttpResult result = fetch(freely(server.url()));
  EXPECT_NE(errorOf(result), "");
  EXPECT_TRUE(result.body.empty());
  EXPECT_EQ(server.requests().size(), 11U);
}

TEST_F(CurlHttpRedirectTest, FollowsNoRedirectToAnotherProtocol) {
  for (const char* place : {"file:///etc/passwd", "ftp://127.0.0.1/", "gopher://127.0.0.1:1/"}) {
    Server server(
        Server::answering(httpAnswer("", "Location: " + std::string(place) + "\r\n", "302 Found")));
    const HttpResult result = fetch(freely(server.url()));
    EXPECT_NE(errorOf(result), "") << place;
    EXPECT_TRUE(result.body.empty()) << place;
  }
}

TEST_F(CurlHttpRedirectTest, ARedirectedPostIsNoRepetition) {
  Server target(Server::answering(httpAnswer("target")));
  Server server(Server::answering(
      httpAnswer("", "Location: " + target.url() + "\r\n", "307 Temporary Redirect")));
  HttpRequest request = freely(server.url());
  request.method = "POST";
  request.body = toBytes("body");
  EXPECT_EQ(bodyOf(fetch(request)), "target");
  EXPECT_TRUE(target.requests().front().ends_with("\r\n\r\nbody"));
}

TEST_F(CurlHttpRedirectTest, OpensNoLocalFile) {
  const HttpResult result = fetch(freely("file:///etc/passwd"));
  EXPECT_NE(errorOf(result), "");
  EXPECT_TRUE(result.body.empty());
}

TEST(HttpTextTest, SentencesAreCapitalisedEndedAndClean) {
  EXPECT_EQ(asSentence("could not connect"), "Could not connect.");
  EXPECT_EQ(asSentence("Done.\r\n"), "Done.");
  EXPECT_EQ(asSentence("a\tb\x1b[2J"), "A b [2J.");
  EXPECT_EQ(asSentence("caf\xe9"), "Caf\xc3\xa9.");
  EXPECT_EQ(asSentence(""), "The transfer failed.");
}

}  // namespace
}  // namespace torvane
