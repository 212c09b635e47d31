// Many requests at once, and the end of a session.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/curl_http_session_fixture.h"

namespace torvane {
namespace {

using CurlHttpConcurrencyTest = CurlHttpSessionTest;

HttpRequest inLane(std::uint64_t lane, HttpRequest request) {
  request.lane = lane;
  return request;
}

TEST_F(CurlHttpConcurrencyTest, RunsThirtyTwoAtOnceAndTheRestAfterwards) {
  std::mutex mutex;
  std::condition_variable arrived;
  int here = 0;
  Server server([&](Connection& connection) {
    while (connection.readRequest()) {
      {
        std::unique_lock lock(mutex);
        ++here;
        arrived.notify_all();
        arrived.wait_for(lock, kPatience, [&] { return here >= 32; });
      }
      connection.send(httpAnswer("x"));
    }
  });
  std::vector<std::future<HttpResult>> results;
  for (int i = 0; i < 200; ++i) results.push_back(start(to(server)));
  for (auto& result : results) EXPECT_EQ(bodyOf(await(result)), "x");
  EXPECT_EQ(server.connections(), 32);
  EXPECT_EQ(server.requests().size(), 200U);
}

TEST_F(CurlHttpConcurrencyTest, OneLaneDoesNotKeepAnotherFromTheServer) {
  std::promise<void> release;
  const auto released = release.get_future().share();
  std::atomic<int> greedy = 0;
  Server server([&](Connection& connection) {
    while (const auto request = connection.readRequest()) {
      const bool isGreedy = request->starts_with("GET /greedy ");
      if (isGreedy) {
        ++greedy;
        released.wait_for(kPatience);
      }
      connection.send(httpAnswer(isGreedy ? "greedy" : "polite"));
    }
  });
  std::vector<std::future<HttpResult>> results;
  for (int i = 0; i < 100; ++i) results.push_back(start(inLane(1, to(server, "/greedy"))));
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(bodyOf(fetch(inLane(2, to(server, "/polite")))), "polite");
  }
  EXPECT_LE(greedy, 8);
  release.set_value();
  for (auto& result : results) EXPECT_EQ(bodyOf(await(result)), "greedy");
  EXPECT_EQ(greedy, 100);
}

TEST_F(CurlHttpConcurrencyTest, TheTimeOfWhatWaitsInALaneIsRunning) {
  Server server([](Connection& connection) { connection.waitForClose(); });
  std::vector<std::future<HttpResult>> results;
  for (int i = 0; i < 8; ++i) results.push_back(start(inLane(1, to(server))));
  HttpRequest late = inLane(1, to(server));
  late.idleTimeout = 0.1;
  EXPECT_EQ(errorOf(fetch(std::move(late))), "The request timed out.");
  session.reset();
  for (auto& result : results) EXPECT_EQ(errorOf(await(result)), "The request was cancelled.");
}

TEST_F(CurlHttpConcurrencyTest, AnswersGoToTheRequestsTheyBelongTo) {
  Server server([](Connection& connection) {
    while (auto request = connection.readRequest()) {
      const std::string path = request->substr(4, request->find(' ', 4) - 4);
      connection.send(httpAnswer(path));
    }
  });
  std::vector<std::future<HttpResult>> results;
  for (int i = 0; i < 500; ++i) results.push_back(start(to(server, "/" + std::to_string(i))));
  for (std::size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(bodyOf(await(results[i])), "/" + std::to_string(i));
  }
}

TEST_F(CurlHttpConcurrencyTest, ACompletionMayStartTheNextRequest) {
  Server server(Server::answering(httpAnswer("x")));
  std::promise<std::string> second;
  session->dataTask(to(server), [&](const HttpResult&) {
    session->dataTask(to(server), [&](const HttpResult& r) { second.set_value(bodyOf(r)); });
  });
  EXPECT_EQ(second.get_future().get(), "x");
}

TEST_F(CurlHttpConcurrencyTest, DestructionCompletesEverythingWithAnError) {
  Server server([](Connection& connection) { connection.waitForClose(); });
  std::vector<std::future<HttpResult>> results;
  for (int i = 0; i < 40; ++i) results.push_back(start(to(server)));
  session.reset();
  for (auto& result : results) EXPECT_EQ(errorOf(await(result)), "The request was cancelled.");
}

TEST_F(CurlHttpConcurrencyTest, SessionsAreIndependent) {
  Server server(Server::answering(httpAnswer("x")));
  CurlHttpSessions sessions;
  session = sessions.makeEphemeral(120);
  EXPECT_EQ(bodyOf(fetch(to(server))), "x");
  session.reset();
  std::promise<std::string> shared;
  sessions.shared().dataTask(to(server), [&](const HttpResult& r) { shared.set_value(bodyOf(r)); });
  EXPECT_EQ(shared.get_future().get(), "x");
  EXPECT_EQ(server.connections(), 2);
}

}  // namespace
}  // namespace torvane
