#include "engine/engine_log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <utility>

#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::uint64_t kLargestLog = 2'000'000;
constexpr std::size_t kLongestTail = 65'536;
constexpr std::size_t kLinesShown = 6;
constexpr std::size_t kLongestLine = 500;
constexpr const char* kEllipsis = "…";

std::string_view trimmed(std::string_view line) {
  const auto first = line.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

// What went wrong stands at a line's end.
std::string shortened(std::string_view line) {
  const auto shown = utf8Suffix(line, kLongestLine);
  return (shown.size() < line.size() ? kEllipsis : "") + std::string(shown);
}

std::string readToEnd(FileHandle& file, std::size_t most) {
  std::string text;
  while (text.size() < most) {
    const Bytes chunk = file.read(most - text.size());
    if (chunk.empty()) break;
    text += asText(chunk);
  }
  return text;
}

// Without its first byte, and what then is left of a character. That byte tells whether the cut
// goes through a line.
std::string afterCut(std::string_view text) {
  const auto kept = utf8Suffix(text, kLongestTail);
  const bool isWithinALine = !text.starts_with('\n') && !kept.starts_with('\n');
  return (isWithinALine ? kEllipsis : "") + std::string(kept);
}

}  // namespace

EngineLog::EngineLog(FileSystem& files, std::string folder)
    : files_(files), folder_(std::move(folder)) {}

std::string EngineLog::path() const {
  files_.createDirectories(folder_);
  return folder_ + "/engine.log";
}

std::unique_ptr<FileHandle> EngineLog::open() const {
  const std::string file = path();
  if (files_.fileSize(file).value_or(0) > kLargestLog) files_.remove(file);
  if (!files_.exists(file)) files_.createFile(file);
  auto handle = files_.openForWriting(file);
  if (handle) handle->seekToEnd();
  return handle;
}

std::string EngineLog::tail(std::uint64_t offset) const {
  const std::string file = path();
  const auto handle = files_.openForReading(file);
  if (!handle) return {};
  const std::uint64_t size = files_.fileSize(file).value_or(0);
  const bool isCut = size > offset && size - offset > kLongestTail;
  handle->seek(isCut ? size - kLongestTail - 1 : offset);

  std::string text = readToEnd(*handle, kLongestTail + 1);
  if (isCut) text = afterCut(text);
  return isValidUtf8(text) ? lastLines(text) : std::string();
}

std::string lastLines(std::string_view text) {
  std::deque<std::string> lines;
  while (!text.empty() && lines.size() < kLinesShown) {
    const auto feed = text.rfind('\n');
    const bool isOnly = feed == std::string_view::npos;
    const auto line = trimmed(isOnly ? text : text.substr(feed + 1));
    if (!line.empty()) lines.push_front(shortened(line));
    text = isOnly ? std::string_view() : text.substr(0, feed);
  }
  std::string joined;
  for (const auto& line : lines) joined += (joined.empty() ? "" : "\n") + line;
  return joined;
}

std::string engineStartBanner(double unixTime) {
  using std::chrono::sys_seconds;
  const sys_seconds time{std::chrono::seconds(static_cast<std::int64_t>(std::floor(unixTime)))};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d +0000",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return "\n===== engine start " + std::string(text.data()) + " =====\n";
}

}  // namespace torvane
