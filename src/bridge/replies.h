#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "ports/http_session.h"
#include "protocol/bytes.h"
#include "protocol/json.h"

namespace torvane {

// Reply frames; none when the header cannot be written as JSON. Any thread.

// The engine's answer to the request `id`: its status, content type and body, or 502 where no
// HTTP response came; with the text of a transport error, if any.
[[nodiscard]] std::optional<Bytes> engineReply(std::int64_t id, const HttpResult& result);

// The same, but 502 with the reason where that would be longer than `longest` bytes.
[[nodiscard]] std::optional<Bytes> engineReplyWithin(std::size_t longest, std::int64_t id,
                                                     const HttpResult& result);

// The helper's own answer: status 200 and a JSON body.
[[nodiscard]] std::optional<Bytes> localReply(std::int64_t id, const JsonObject& body);

}  // namespace torvane
