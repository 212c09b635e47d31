#include "bridge/replies.h"

#include "protocol/p2p_frame.h"

namespace torvane {
namespace {

constexpr const char* kTooLong = "The answer is too long to be sent to the device.";

JsonObject replyHeader(std::int64_t id, int status, const std::string& contentType) {
  return {{"id", id}, {"status", status}, {"contentType", contentType}};
}

}  // namespace

std::optional<Bytes> engineReply(std::int64_t id, const HttpResult& result) {
  int status = 502;
  std::string contentType = "application/octet-stream";
  if (result.response) {
    status = result.response->status;
    contentType = result.response->contentType.value_or(contentType);
  }
  JsonObject header = replyHeader(id, status, contentType);
  if (result.error) header["error"] = *result.error;
  return P2PFrame::encode(header, result.body);
}

std::optional<Bytes> engineReplyWithin(std::size_t longest, std::int64_t id,
                                       const HttpResult& result) {
  auto reply = engineReply(id, result);
  if (!reply || reply->size() <= longest) return reply;
  return engineReply(id, {.response = std::nullopt, .body = {}, .error = kTooLong});
}

std::optional<Bytes> localReply(std::int64_t id, const JsonObject& body) {
  const std::string json = serializeJson(body).value_or("");
  return P2PFrame::encode(replyHeader(id, 200, "application/json"), asBytes(json));
}

}  // namespace torvane
