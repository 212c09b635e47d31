// Requests and answers as they go over the wire.

#include <mutex>
#include <thread>

#include "platform/curl_http_session_fixture.h"

namespace torvane {
namespace {

TEST_F(CurlHttpSessionTest, GetsABodyAndItsType) {
  Server server(Server::answering(httpAnswer("hello", "Content-Type: text/plain\r\n")));
  const HttpResult result = fetch(to(server, "/a?b=c"));
  EXPECT_EQ(errorOf(result), "");
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_EQ(result.response->contentType, "text/plain");
  EXPECT_EQ(bodyOf(result), "hello");
  EXPECT_EQ(server.requests().front(),
            "GET /a?b=c HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
                "\r\nAccept: */*\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, CompletesOnAThreadOfItsOwnNeverInsideTheCall) {
  std::promise<std::thread::id> completed;
  std::mutex calling;
  std::unique_lock lock(calling);
  session->dataTask({}, [&](const HttpResult&) {
    { const std::lock_guard waited(calling); }  // an inline call would never return
    completed.set_value(std::this_thread::get_id());
  });
  lock.unlock();
  EXPECT_NE(completed.get_future().get(), std::this_thread::get_id());
}

TEST_F(CurlHttpSessionTest, DeliversEveryStatus) {
  for (const char* status : {"201 Created", "400 Bad", "404 Not Found", "500 Oops", "599 Odd"}) {
    Server server(Server::answering(httpAnswer("text", "", status)));
    const HttpResult result = fetch(to(server));
    EXPECT_EQ(std::to_string(statusOf(result)), std::string(status).substr(0, 3));
    EXPECT_EQ(bodyOf(result), "text");
    EXPECT_EQ(errorOf(result), "");
  }
}

TEST_F(CurlHttpSessionTest, AnswersWithoutABodyAreComplete) {
  for (const char* status : {"204 No Content", "304 Not Modified"}) {
    Server server(Server::answering("HTTP/1.1 " + std::string(status) + "\r\n\r\n"));
    const HttpResult result = fetch(to(server));
    EXPECT_EQ(std::to_string(statusOf(result)), std::string(status).substr(0, 3));
    EXPECT_TRUE(result.body.empty());
    EXPECT_EQ(errorOf(result), "");
    EXPECT_FALSE(result.response->contentType.has_value());
  }
}

TEST_F(CurlHttpSessionTest, PostsABodyWithItsType) {
  Server server(Server::answering(httpAnswer("")));
  HttpRequest request = to(server);
  request.method = "POST";
  request.contentType = "application/json";
  request.body = toBytes("{\"a\":1}");
  EXPECT_EQ(statusOf(fetch(std::move(request))), 200);
  const std::string sent = server.requests().front();
  EXPECT_TRUE(sent.starts_with("POST / HTTP/1.1\r\n")) << sent;
  EXPECT_NE(sent.find("\r\nContent-Type: application/json\r\n"), std::string::npos) << sent;
  EXPECT_TRUE(sent.ends_with("\r\n\r\n{\"a\":1}")) << sent;
}

TEST_F(CurlHttpSessionTest, AddsNoContentTypeOfItsOwn) {
  Server server(Server::answering(httpAnswer("")));
  for (const char* method : {"POST", "PUT", "PATCH", "GET", "DELETE"}) {
    HttpRequest request = to(server);
    request.method = method;
    request.body = toBytes("x");
    EXPECT_EQ(statusOf(fetch(request)), 200);
    request.body.clear();
    EXPECT_EQ(statusOf(fetch(request)), 200);
  }
  ASSERT_EQ(server.requests().size(), 10U);
  for (const std::string& sent : server.requests()) {
    EXPECT_EQ(sent.find("Content-Type"), std::string::npos) << sent;
  }
}

TEST_F(CurlHttpSessionTest, AnEmptyContentTypeIsSentAsOne) {
  Server server(Server::answering(httpAnswer("")));
  HttpRequest request = to(server);
  request.method = "POST";
  request.contentType = "";
  EXPECT_EQ(statusOf(fetch(request)), 200);
  EXPECT_NE(server.requests().front().find("\r\nContent-Type:\r\n"), std::string::npos);
}

TEST_F(CurlHttpSessionTest, SendsAnyMethodThatIsAToken) {
  Server server(Server::answering(httpAnswer("done")));
  for (const char* method :
       {"DELETE", "OPTIONS", "PROPFIND", "get", "M-SEARCH", "!#$%&'*+-.^_`|~"}) {
    for (const char* body : {"", "body"}) {
      HttpRequest request = to(server);
      request.method = method;
      request.body = toBytes(body);
      EXPECT_EQ(bodyOf(fetch(request)), "done") << method;
      EXPECT_TRUE(server.requests().back().starts_with(std::string(method) + " / HTTP/1.1\r\n"));
      EXPECT_TRUE(server.requests().back().ends_with("\r\n\r\n" + std::string(body)));
    }
  }
}

TEST_F(CurlHttpSessionTest, BodilessPostAnnouncesNoBytes) {
  Server server(Server::answering(httpAnswer("")));
  HttpRequest request = to(server);
  request.method = "POST";
  EXPECT_EQ(statusOf(fetch(request)), 200);
  EXPECT_NE(server.requests().front().find("\r\nContent-Length: 0\r\n"), std::string::npos);
}

TEST_F(CurlHttpSessionTest, HeadDoesNotWaitForABody) {
  Server server([](Connection& connection) {
    while (auto request = connection.readRequest()) {
      const bool isHead = request->starts_with("HEAD ");
      connection.send(isHead ? "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n" : httpAnswer("b"));
    }
  });
  HttpRequest request = to(server);
  request.method = "HEAD";
  request.maxResponseBytes = 10;  // of what comes, not of what a GET would give
  const HttpResult result = fetch(request);
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_EQ(errorOf(result), "");
  EXPECT_TRUE(result.body.empty());
  EXPECT_EQ(bodyOf(fetch(to(server))), "b");
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(CurlHttpSessionTest, SendsTheBodyOfAHeadAndWaitsForNone) {
  Server server(Server::answering("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n"));
  for (const std::size_t size : {std::size_t{5}, std::size_t{3'000'000}}) {
    HttpRequest request = to(server);
    request.method = "HEAD";
    request.contentType = "a/b";
    request.body.assign(size, 'x');
    const HttpResult result = fetch(request);
    EXPECT_EQ(statusOf(result), 200);
    EXPECT_EQ(errorOf(result), "");
    const std::string sent = server.requests().back();
    EXPECT_TRUE(sent.starts_with("HEAD / HTTP/1.1\r\n")) << sent.substr(0, 100);
    EXPECT_NE(sent.find("\r\nContent-Type: a/b\r\n"), std::string::npos) << sent.substr(0, 200);
    EXPECT_TRUE(sent.ends_with("\r\n\r\n" + std::string(size, 'x')));
  }
}

TEST_F(CurlHttpSessionTest, SendsATabInAContentType) {
  Server server(Server::answering(httpAnswer("")));
  HttpRequest request = to(server);
  request.method = "POST";
  request.contentType = "text/plain;\tcharset=utf-8";
  request.body = toBytes("x");
  EXPECT_EQ(statusOf(fetch(request)), 200);
  EXPECT_NE(server.requests().front().find("\r\nContent-Type: text/plain;\tcharset=utf-8\r\n"),
            std::string::npos);
}

TEST_F(CurlHttpSessionTest, SendsALargeBodyWithoutAskingFirst) {
  Server server(Server::answering(httpAnswer("")));
  HttpRequest request = to(server);
  request.method = "POST";
  request.contentType = "image/png";
  request.body.assign(3'000'000, 'x');
  EXPECT_EQ(statusOf(fetch(request)), 200);
  EXPECT_EQ(server.requests().front().find("Expect"), std::string::npos);
  EXPECT_GT(server.requests().front().size(), 3'000'000U);
}

TEST_F(CurlHttpSessionTest, PassesACompressedBodyUnchanged) {
  const std::string body("\x1f\x8b\x08\x00 not really\x00\xff", 16);
  Server server(Server::answering(httpAnswer(body, "Content-Encoding: gzip\r\n")));
  EXPECT_EQ(bodyOf(fetch(to(server))), body);
  EXPECT_EQ(server.requests().front().find("Accept-Encoding"), std::string::npos);
}

TEST_F(CurlHttpSessionTest, ThePathIsSentAsGiven) {
  Server server(Server::answering(httpAnswer("")));
  for (const char* path : {"/a/../b/./c", "/%41%2e%2E/", "/?", "//evil/x", "/a;b=c?d=@e:f", "?q"}) {
    EXPECT_EQ(statusOf(fetch(to(server, path))), 200);
    const std::string expected = path[0] == '?' ? "/" + std::string(path) : path;
    const std::string sent = server.requests().back();
    EXPECT_EQ(sent.substr(0, sent.find("\r\n")), "GET " + expected + " HTTP/1.1");
  }
}

TEST_F(CurlHttpSessionTest, AHeaderThatIsNotUtf8IsReadAsLatin1) {
  Server server(
      Server::answering(httpAnswer("", "Content-Type: text/plain; name=\"\xe9t\xe9\xff\"\r\n")));
  EXPECT_EQ(fetch(to(server)).response->contentType,
            "text/plain; name=\"\xc3\xa9t\xc3\xa9\xc3\xbf\"");
  Server utf8(Server::answering(httpAnswer("", "Content-Type: a/\xc3\xa9\r\n")));
  EXPECT_EQ(fetch(to(utf8)).response->contentType, "a/\xc3\xa9");
}

TEST_F(CurlHttpSessionTest, JoinsChunks) {
  Server server(
      Server::answering("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Type: a/b\r\n\r\n"
                        "5\r\nhello\r\n7;x=y\r\n, world\r\n0\r\nX-Trailer: t\r\n\r\n"));
  for (int i = 0; i < 2; ++i) {
    const HttpResult result = fetch(to(server));
    EXPECT_EQ(bodyOf(result), "hello, world");
    EXPECT_EQ(statusOf(result), 200);
    EXPECT_EQ(result.response->contentType, "a/b");
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(CurlHttpSessionTest, ABodyWithoutALengthEndsWithTheConnection) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n\r\nall of it");
  });
  EXPECT_EQ(bodyOf(fetch(to(server))), "all of it");
}

TEST_F(CurlHttpSessionTest, InterimAnswersAreSkipped) {
  Server server(
      Server::answering("HTTP/1.1 100 Continue\r\n\r\n"
                        "HTTP/1.1 103 Early Hints\r\nContent-Type: no/no\r\n\r\n" +
                        httpAnswer("final")));
  const HttpResult result = fetch(to(server));
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_EQ(bodyOf(result), "final");
}

TEST_F(CurlHttpSessionTest, AnInterimAnswerAloneIsNoResponse) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 102 Processing\r\n\r\n");
  });
  const HttpResult result = fetch(to(server));
  EXPECT_FALSE(result.response.has_value());
  EXPECT_NE(errorOf(result), "");
}

TEST_F(CurlHttpSessionTest, KeepsAConnectionForTheNextRequest) {
  Server server(Server::answering(httpAnswer("x")));
  for (int i = 0; i < 50; ++i) EXPECT_EQ(bodyOf(fetch(to(server))), "x");
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(server.requests().size(), 50U);
}

TEST_F(CurlHttpSessionTest, NothingOfARequestIsLeftForTheNext) {
  Server server(Server::answering(httpAnswer("x")));
  HttpRequest request = to(server);
  request.method = "PUT";
  request.contentType = "a/b";
  request.body = toBytes("body");
  fetch(request);
  request.method = "HEAD";
  fetch(request);
  const HttpResult result = fetch(to(server));
  EXPECT_EQ(bodyOf(result), "x");
  EXPECT_EQ(server.requests().back(),
            "GET / HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
                "\r\nAccept: */*\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, AddressesOfEveryLengthFollowEachOther) {
  Server server(Server::answering(httpAnswer("x")));
  const std::string longPath = "/" + std::string(5000, 'a');
  for (const std::string& path : {"/a" + longPath, std::string("/a"), std::string("/a"), longPath,
                                  longPath, std::string("/b")}) {
    fetch(to(server, path));
    EXPECT_TRUE(server.requests().back().starts_with("GET " + path + " "));
  }
  EXPECT_EQ(server.requests().size(), 6U);
}

TEST_F(CurlHttpSessionTest, RequestsOfEveryKindFollowEachOther) {
  Server server(Server::answering(httpAnswer("x")));
  const auto sent = [&](const char* method, const char* body, const char* path) {
    HttpRequest request = to(server, path);
    request.method = method;
    request.body = toBytes(body);
    if (*path == '?') request.onlyEndpoint.reset();
    fetch(std::move(request));
    const std::string text = server.requests().back();
    return text.substr(0, text.find(" HTTP/")) + text.substr(text.find("\r\n\r\n") + 4);
  };
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(sent("GET", "", "/1"), "GET /1");
    EXPECT_EQ(sent("GET", "", "/2"), "GET /2");
    EXPECT_EQ(sent("DELETE", "", "/3"), "DELETE /3");
    EXPECT_EQ(sent("DELETE", "body", "/4"), "DELETE /4body");
    EXPECT_EQ(sent("POST", "", "/5"), "POST /5");
    EXPECT_EQ(sent("POST", "more", "/6"), "POST /6more");
    EXPECT_EQ(sent("GET", "odd", "/7"), "GET /7odd");
    EXPECT_EQ(sent("GET", "", "/8"), "GET /8");
    EXPECT_EQ(sent("GET", "", "?9"), "GET /?9");
  }
}

}  // namespace
}  // namespace torvane
