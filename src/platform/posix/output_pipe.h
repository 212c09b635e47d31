#pragma once

#include <optional>

#include "platform/posix/unique_fd.h"
#include "protocol/bytes.h"

namespace torvane {

struct Pipe {
  UniqueFd readEnd;
  UniqueFd writeEnd;
};

// Both ends are close-on-exec. None: no descriptors are left (errno tells).
[[nodiscard]] std::optional<Pipe> makePipe();

// Reads `output` until its end or until `exited` reports the end of its own pipe; in the latter
// case takes what is there and no more. At most 16 MiB are kept, the rest is read and dropped.
[[nodiscard]] Bytes readUntilEndOrExit(UniqueFd output, UniqueFd exited);

}  // namespace torvane
