// Recorded and malformed answers from outside: whatever comes, a request completes once, and the
// session goes on.

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>

#include "platform/curl_http_session_fixture.h"
#include "support/folders.h"

namespace torvane {
namespace {

struct RecordedAnswer {
  std::string name;
  std::string bytes;
  std::vector<int> statuses = {};  // that the collection's own parser reads, in order
};

std::string replaceAll(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// The notation of the collection: line ends are CRLF, others are written as escapes.
std::string unescape(std::string text) {
  text = replaceAll(std::move(text), "\\\n", "");
  text = replaceAll(std::move(text), "\n", "\r\n");
  text = replaceAll(std::move(text), "\\r", "\r");
  text = replaceAll(std::move(text), "\\n", "\n");
  text = replaceAll(std::move(text), "\\t", "\t");
  text = replaceAll(std::move(text), "\\f", "\f");
  for (std::size_t at = 0; (at = text.find("\\x", at)) != std::string::npos; ++at) {
    text.replace(at, 4, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
  }
  return text;
}

void readStatuses(std::istream& log, std::vector<int>& statuses) {
  constexpr std::string_view kMark = "headers complete status=";
  std::string line;
  while (std::getline(log, line) && line != "```") {
    const std::size_t mark = line.find(kMark);
    if (mark != std::string::npos) statuses.push_back(std::stoi(line.substr(mark + kMark.size())));
  }
}

void readRecordedAnswers(const std::filesystem::path& file, std::vector<RecordedAnswer>& answers) {
  std::ifstream stream(file);
  std::string line;
  std::string heading;
  while (std::getline(stream, line)) {
    if (line.starts_with("#")) heading = line;
    if (line == "```log" && !answers.empty()) readStatuses(stream, answers.back().statuses);
    if (line != "```http") continue;
    std::string block;
    while (std::getline(stream, line) && line != "```") block += line + "\n";
    if (!block.empty()) block.pop_back();
    answers.push_back({file.filename().string() + " " + heading, unescape(block)});
  }
}

std::vector<RecordedAnswer> recordedAnswers() {
  std::vector<RecordedAnswer> answers;
  const auto folder = vectorsFolder() / "llhttp/response";
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
    if (entry.path().extension() == ".md") readRecordedAnswers(entry.path(), answers);
  }
  return answers;
}

class CurlHttpReplayTest : public CurlHttpSessionTest {
 protected:
  // Serves the answer once, and then keeps the connection open or closes it.
  HttpResult replay(const RecordedAnswer& answer, bool lingers) {
    Server server([&](Connection& connection) {
      if (connection.number > 0) return Server::answering(httpAnswer("fine"))(connection);
      connection.readRequest();
      connection.send(answer.bytes);
      if (lingers) connection.waitForClose();
    });
    HttpRequest request = to(server);
    request.method = "POST";  // so that a dropped connection is not tried again
    request.idleTimeout = 0.1;
    request.maxResponseBytes = 1'000'000;
    std::atomic<int> completions = 0;
    std::promise<HttpResult> first;
    session->dataTask(request, [&](HttpResult result) {
      if (++completions == 1) first.set_value(std::move(result));
    });
    auto result = first.get_future();
    const HttpResult completed = await(result);
    checkForm(completed, answer.name);
    checkStatus(completed, answer);
    if (!lingers) {
      EXPECT_EQ(bodyOf(fetch(to(server))), "fine") << answer.name;
    }
    session = std::make_unique<CurlHttpSession>(60);  // the old one has said all it had to say
    EXPECT_EQ(completions, 1) << answer.name;
    return completed;
  }

  // Whatever is delivered as a success was read as the other parser reads it.
  static void checkStatus(const HttpResult& result, const RecordedAnswer& answer) {
    if (result.error || answer.statuses.empty()) return;
    const auto found = std::find(answer.statuses.begin(), answer.statuses.end(), statusOf(result));
    EXPECT_NE(found, answer.statuses.end()) << answer.name << ": " << statusOf(result);
  }

  static void checkForm(const HttpResult& result, const std::string& name) {
    EXPECT_TRUE(result.response || result.error) << name;
    if (result.error) {
      EXPECT_TRUE(result.body.empty()) << name;
      EXPECT_FALSE(result.error->empty()) << name;
    }
    if (result.response) {
      EXPECT_GE(result.response->status, 0) << name;
      EXPECT_LE(result.response->status, 999) << name;
    }
  }
};

TEST_F(CurlHttpReplayTest, EveryRecordedAnswerCompletesItsRequestOnce) {
  const auto answers = recordedAnswers();
  if (answers.empty()) GTEST_SKIP() << "no recorded answers below TORVANE_VECTORS_DIR";
  for (const RecordedAnswer& answer : answers) {
    replay(answer, false);
    replay(answer, true);
  }
  EXPECT_GE(answers.size(), 80U);
}

TEST_F(CurlHttpReplayTest, AnswersCutAnywhereCompleteToo) {
  const std::string whole =
      "HTTP/1.1 200 OK\r\nContent-Type: a/b\r\nTransfer-Encoding: chunked\r\n\r\n"
      "5\r\nhello\r\n0\r\nX: y\r\n\r\n";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const HttpResult result =
        replay({"cut at " + std::to_string(length), whole.substr(0, length)}, false);
    if (!result.error) {
      EXPECT_EQ(bodyOf(result), "hello") << length;
    }
  }
}

}  // namespace
}  // namespace torvane
