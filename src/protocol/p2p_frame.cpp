#include "protocol/p2p_frame.h"

#include <cstdlib>
#include <limits>

namespace torvane::P2PFrame {
namespace {

constexpr std::size_t kPrefixSize = 4;

std::uint64_t readBigEndian(ByteView prefix) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : prefix) value = value << 8U | byte;
  return value;
}

void appendBigEndian(Bytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    out.push_back(static_cast<std::uint8_t>(value >> static_cast<unsigned>(shift)));
  }
}

}  // namespace

std::optional<Bytes> encode(const JsonObject& header, ByteView body) {
  const auto json = serializeJson(header);
  if (!json) return std::nullopt;
  if (json->size() > std::numeric_limits<std::uint32_t>::max()) std::abort();

  Bytes frame;
  frame.reserve(kPrefixSize + json->size() + body.size());
  appendBigEndian(frame, static_cast<std::uint32_t>(json->size()));
  frame.insert(frame.end(), json->begin(), json->end());
  frame.insert(frame.end(), body.begin(), body.end());
  return frame;
}

std::optional<View> decodeView(ByteView frame) {
  if (frame.size() < kPrefixSize) return std::nullopt;
  const std::uint64_t headerEnd = kPrefixSize + readBigEndian(frame.first(kPrefixSize));
  if (frame.size() < headerEnd) return std::nullopt;
  const auto end = static_cast<std::size_t>(headerEnd);
  auto header =
      parseJsonObject(asText(frame.subspan(kPrefixSize, end - kPrefixSize)), kMaxHeaderValues);
  if (!header) return std::nullopt;
  return View{std::move(*header), frame.subspan(end)};
}

std::optional<Frame> decode(ByteView frame) {
  auto view = decodeView(frame);
  if (!view) return std::nullopt;
  return Frame{std::move(view->header), Bytes(view->body.begin(), view->body.end())};
}

}  // namespace torvane::P2PFrame
