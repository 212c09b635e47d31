// Bodies that go to a file.

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/curl_http_session_fixture.h"
#include "support/own_mounts.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

class CurlHttpDownload : public CurlHttpSessionTest {
 protected:
  TemporaryFolder folder;
  const std::string path = folder / "download";

  HttpRequest saving(const Server& server) const {
    HttpRequest request = to(server);
    request.saveTo = path;
    return request;
  }
  [[nodiscard]] std::string saved() const {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  [[nodiscard]] bool isEmptyFolder() const { return std::filesystem::is_empty(folder.path()); }
};

TEST_F(CurlHttpDownload, BodyGoesToAFileForTheUserAlone) {
  const std::string body(3'000'000, 'z');
  Server server(Server::answering(httpAnswer(body)));
  const HttpResult result = fetch(saving(server));
  EXPECT_EQ(errorOf(result), "");
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_TRUE(result.body.empty());
  EXPECT_EQ(saved(), body);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(CurlHttpDownload, EmptyBodyIsAnEmptyFile) {
  Server server(Server::answering(httpAnswer("")));
  EXPECT_EQ(errorOf(fetch(saving(server))), "");
  EXPECT_TRUE(std::filesystem::is_empty(path));
}

TEST_F(CurlHttpDownload, StatusIsToldWhateverTheFileHolds) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnone");
    connection.waitForClose();
  });
  EXPECT_EQ(statusOf(fetch(saving(server))), 404);
}

TEST_F(CurlHttpDownload, FileThatIsThereIsLeftAlone) {
  std::ofstream(path) << "before";
  Server server(Server::answering(httpAnswer("after")));
  EXPECT_EQ(errorOf(fetch(saving(server))), "The response could not be written to a file.");
  EXPECT_EQ(saved(), "before");
}

TEST_F(CurlHttpDownload, LinkInTheFilesPlaceIsNotFollowed) {
  std::filesystem::create_symlink(folder / "elsewhere", path);
  Server server(Server::answering(httpAnswer("text")));
  EXPECT_EQ(errorOf(fetch(saving(server))), "The response could not be written to a file.");
  EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
}

TEST_F(CurlHttpDownload, MissingFolderIsAnError) {
  Server server(Server::answering(httpAnswer("text")));
  HttpRequest request = saving(server);
  for (const std::string& odd : {folder / "none/file", path + std::string("\0", 1)}) {
    request.saveTo = odd;
    EXPECT_EQ(errorOf(fetch(request)), "The response could not be written to a file.");
  }
  EXPECT_TRUE(isEmptyFolder());
}

TEST_F(CurlHttpDownload, LongerBodyThanAllowedLeavesNoFile) {
  for (const char* header : {"Content-Length: 11\r\n", ""}) {
    Server server([header](Connection& connection) {
      connection.readRequest();
      connection.send("HTTP/1.1 200 OK\r\n" + std::string(header) + "\r\n12345678901");
      connection.close();
    });
    HttpRequest request = saving(server);
    request.maxResponseBytes = 10;
    EXPECT_EQ(errorOf(fetch(request)), "The response is longer than 10 bytes.");
    EXPECT_TRUE(isEmptyFolder());
  }
}

TEST_F(CurlHttpDownload, ServerGoneInMidDownloadLeavesNoFile) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
    connection.close();
  });
  const HttpResult result = fetch(saving(server));
  EXPECT_NE(errorOf(result), "");
  EXPECT_EQ(statusOf(result), 200);
  EXPECT_TRUE(isEmptyFolder());
}

TEST_F(CurlHttpDownload, TimeoutLeavesNoFile) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
    connection.waitForClose();
  });
  HttpRequest request = saving(server);
  request.idleTimeout = 0.2;
  EXPECT_EQ(errorOf(fetch(request)), "The request timed out.");
  EXPECT_TRUE(isEmptyFolder());
}

TEST_F(CurlHttpDownload, SessionThatEndsLeavesNoFile) {
  Server server([](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
    connection.waitForClose();
  });
  auto result = start(saving(server));
  session.reset();
  EXPECT_NE(errorOf(await(result)), "");
  EXPECT_TRUE(isEmptyFolder());
}

TEST_F(CurlHttpDownload, FullDiskIsAnErrorAndLeavesNoFile) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);  // so that a write fails instead
  rlimit small = before;
  small.rlim_cur = 100'000;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  Server server(Server::answering(httpAnswer(std::string(3'000'000, 'z'))));
  const HttpResult result = fetch(saving(server));
  ::setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(errorOf(result), "The response could not be written to a file.");
  EXPECT_FALSE(result.diskIsFull) << "its files may only not be larger";
  EXPECT_TRUE(isEmptyFolder());
}

TEST_F(CurlHttpDownload, FullDiskIsToldFromOtherFailures) {
  OwnMounts mounts;
  if (!mounts.putDisk(folder.path(), 100'000)) GTEST_SKIP() << "only the superuser can mount one";
  session = std::make_unique<CurlHttpSession>(60);  // its thread sees the disk
  Server server(Server::answering(httpAnswer(std::string(3'000'000, 'z'))));
  const HttpResult full = fetch(saving(server));
  EXPECT_TRUE(full.diskIsFull);
  EXPECT_EQ(errorOf(full), "The response could not be written to a file.");
  EXPECT_TRUE(isEmptyFolder());
  Server small(Server::answering(httpAnswer("text")));
  EXPECT_EQ(errorOf(fetch(saving(small))), "") << "what was written is gone";
  const HttpResult taken = fetch(saving(small));
  EXPECT_NE(errorOf(taken), "");
  EXPECT_FALSE(taken.diskIsFull) << "nor is the next one's failure";
}

TEST_F(CurlHttpDownload, CompletionThatTakesLongHoldsUpNoOtherRequest) {
  Server server(Server::answering(httpAnswer("x")));
  CurlHttpSessions sessions;
  std::promise<void> otherIsDone;
  std::promise<bool> wasHeldUp;
  sessions.shared().dataTask(saving(server), [&](const HttpResult&) {
    const auto waited = otherIsDone.get_future().wait_for(kPatience);
    wasHeldUp.set_value(waited != std::future_status::ready);
  });
  for (int i = 0; i < 3; ++i) {
    std::promise<void> done;
    sessions.shared().dataTask(to(server), [&](const HttpResult&) { done.set_value(); });
    ASSERT_EQ(done.get_future().wait_for(kPatience), std::future_status::ready);
  }
  otherIsDone.set_value();
  EXPECT_FALSE(wasHeldUp.get_future().get());
}

}  // namespace
}  // namespace torvane
