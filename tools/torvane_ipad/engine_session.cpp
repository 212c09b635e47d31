#include "torvane_ipad/engine_session.h"

#include <algorithm>

#include "torvane_ipad/printable.h"

namespace torvane::ipad {
namespace {

constexpr const char* kStatePath = "/api/state";

// A sentence ends in a full stop, whoever wrote it.
std::string asSentence(std::string text) {
  return text.empty() || text.ends_with('.') || text.ends_with('?') ? text : text + ".";
}

}  // namespace

EngineSession::EngineSession(const Options& options, const Console& console)
    : console_(console),
      reach_(HelperReach::prepare(options, console, exit_)),
      session_(reach_ ? reach_->open({}, exit_) : nullptr) {}

std::string EngineSession::helperName() const {
  return "\"" + printable(reach_->welcome().helperName) + "\"";
}

std::optional<Reply> EngineSession::ask(const Request& request, Duration patience) {
  auto answer = session_->request(request, patience);
  if (auto* reply = std::get_if<Reply>(&answer)) return std::move(*reply);
  exit_ = reach_->fail(std::get<LinkFailure>(answer));
  return std::nullopt;
}

// The helper's own words for what kept it from the engine are those of its system.
bool EngineSession::isEngineOff() {
  const auto answer = session_->request({.path = kStatePath});
  const auto* reply = std::get_if<Reply>(&answer);
  return reply == nullptr || reply->error;
}

std::string EngineSession::problemOf(const Reply& reply) {
  if (reply.error) {
    return isEngineOff()
               ? "The engine is not running: choose \"Start Server\" on " + helperName() + "."
               : "The engine's answer broke off, or was longer than the 63 MiB that the link "
                 "carries. Try again, or look into the engine's log on " +
                     helperName() + ".";
  }
  if (reply.status < 400) return {};
  const auto body = parseJsonObject(asText(reply.body));
  const std::string why = printable(body ? stringMember(*body, "error").value_or("") : "");
  constexpr std::int64_t kConflict = 409;  // with a sentence for the presenter
  if (reply.status == kConflict && !why.empty()) return asSentence(why);
  const std::string start = "The engine answered with status " + std::to_string(reply.status);
  return asSentence(why.empty() ? start : start + ": " + why);
}

std::optional<JsonObject> EngineSession::objectIn(const Reply& reply) {
  std::string problem = problemOf(reply);
  auto object = parseJsonObject(asText(reply.body));
  if (problem.empty() && object) return object;
  if (reply.status == 404 || reply.status == 405) {
    problem =
        "The engine on " + helperName() + " does not know this command; it may be an old one.";
  }
  fail(problem.empty() ? "The engine on " + helperName() +
                             " gave an answer of another kind; it "
                             "may be an old one."
                       : problem);
  return std::nullopt;
}

std::optional<JsonObject> EngineSession::get(const std::string& path) {
  const auto reply = ask({.path = path});
  return reply ? objectIn(*reply) : std::nullopt;
}

std::optional<JsonObject> EngineSession::post(const std::string& path, const JsonObject& body) {
  const auto reply = ask(actionRequest(path, body));
  return reply ? objectIn(*reply) : std::nullopt;
}

Exit EngineSession::fail(const std::string& sentence) {
  return exit_ = console_.fail(Exit::refused, sentence);
}

Request actionRequest(const std::string& path, const JsonObject& body) {
  Request request{.path = path, .method = "POST"};
  if (body.empty()) return request;
  request.contentType = "application/json";
  request.body = toBytes(*serializeJson(body));
  return request;
}

}  // namespace torvane::ipad
