#pragma once

#include <sys/types.h>

#include "ports/child_process.h"

namespace torvane {

struct SpawnResult {
  pid_t pid = -1;
  int error = 0;  // an errno value when launching failed
};

// Starts the program with the null device as standard input and `outputDescriptor` as standard
// output and error (-1: the null device), default signal handling, and no other descriptor.
[[nodiscard]] SpawnResult spawnChild(const ProcessLaunch& launch, int outputDescriptor);

}  // namespace torvane
