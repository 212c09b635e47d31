#include "platform/posix/output_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace torvane {
namespace {

constexpr std::size_t kMostBytesKept = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kChunk = std::size_t{64} * 1024;

// The number of bytes read, 0 at the end, none when there are none now or reading failed.
std::optional<std::size_t> readChunk(int descriptor, std::size_t most, Bytes& kept) {
  std::array<std::uint8_t, kChunk> chunk;  // NOLINT: filled by read()
  ssize_t count = 0;
  do {
    count = ::read(descriptor, chunk.data(), std::min(most, chunk.size()));
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::nullopt;
  const auto size = static_cast<std::size_t>(count);
  const std::size_t room = std::min(size, kMostBytesKept - kept.size());
  kept.insert(kept.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(room));
  return size;
}

enum class Event { output, exit };

Event waitForEvent(int output, int exited) {
  std::array<pollfd, 2> polled{{{output, POLLIN, 0}, {exited, POLLIN, 0}}};
  while (::poll(polled.data(), polled.size(), -1) < 0 && errno == EINTR) {
  }
  return polled[1].revents != 0 ? Event::exit : Event::output;
}

// All that the child itself wrote is in the pipe by now. A grandchild may go on writing, so the
// amount is fixed first.
void drain(int descriptor, Bytes& kept) {
  int waiting = 0;
  if (::ioctl(descriptor, FIONREAD, &waiting) != 0 || waiting < 0) return;
  auto left = static_cast<std::size_t>(waiting);
  while (left > 0) {
    const auto count = readChunk(descriptor, left, kept);
    if (!count || *count == 0) return;
    left -= *count;
  }
}

}  // namespace

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
#ifdef __APPLE__
  if (::pipe(ends.data()) != 0) return std::nullopt;
  for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
#else
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
#endif
  return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

Bytes readUntilEndOrExit(UniqueFd output, UniqueFd exited) {
  Bytes kept;
  while (waitForEvent(output.get(), exited.get()) == Event::output) {
    if (readChunk(output.get(), kChunk, kept).value_or(0) == 0) return kept;
  }
  drain(output.get(), kept);
  return kept;
}

}  // namespace torvane
