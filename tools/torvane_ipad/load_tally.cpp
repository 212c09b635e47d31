#include "torvane_ipad/load_tally.h"

#include <string_view>

#include "protocol/json.h"

namespace torvane::ipad {

bool isAbout(const LoadMark& mark, const Reply& reply) {
  const std::string_view body = asText(reply.body);
  if (mark.slide) {
    const auto object = parseJsonObject(body);
    return object && integerMember(*object, "slide") == mark.slide;
  }
  constexpr std::string_view kSign = "load=";
  const auto start = body.find(kSign);
  if (start == std::string_view::npos) return true;
  const std::string_view rest = body.substr(start + kSign.size());
  return rest.substr(0, rest.find_first_not_of("0123456789-")) == mark.mark;
}

LoadCounts& LoadCounts::operator+=(const LoadCounts& other) {
  sent += other.sent;
  answered += other.answered;
  failed += other.failed;
  lost += other.lost;
  late += other.late;
  doubled += other.doubled;
  misdelivered += other.misdelivered;
  broken += other.broken;
  return *this;
}

bool LoadCounts::isFaultless() const {
  return answered == sent && failed + lost + late + doubled + misdelivered + broken == 0;
}

void LoadTally::requestSent(std::int64_t id, Time now, LoadMark mark) {
  if (counts_.sent == 0) firstId_ = id;
  lastId_ = id;
  ++counts_.sent;
  inFlight_.emplace(id, Sent{now, std::move(mark)});
}

void LoadTally::frameReceived(ByteView frame, Time now) {
  const auto reply = parseReply(frame);
  if (!reply) {
    ++counts_.broken;
    return;
  }
  const auto request = inFlight_.find(reply->id);
  if (request == inFlight_.end()) return surplus(reply->id);
  const Sent sent = std::move(request->second);
  inFlight_.erase(request);
  answered(sent, *reply, now);
}

void LoadTally::answered(const Sent& request, const Reply& reply, Time now) {
  if (reply.status < 400 && !isAbout(request.mark, reply)) {
    ++counts_.misdelivered;
    return;
  }
  ++counts_.answered;
  if (reply.status >= 400) ++counts_.failed;
  latencies_.add(now - request.at);
}

void LoadTally::surplus(std::int64_t id) {
  if (expired_.erase(id) != 0) {
    --counts_.lost;
    ++counts_.late;
  } else if (id >= firstId_ && id <= lastId_) {
    ++counts_.doubled;
  } else {
    ++counts_.misdelivered;
  }
}

void LoadTally::expire(Time limit) {
  // Ids grow with time, so the oldest come first.
  while (!inFlight_.empty() && inFlight_.begin()->second.at < limit) {
    expired_.insert(inFlight_.begin()->first);
    inFlight_.erase(inFlight_.begin());
    ++counts_.lost;
  }
}

}  // namespace torvane::ipad
