#pragma once

#include <cstdio>
#include <cstdlib>

namespace torvane::fuzz {

// A finding: what must hold for every input does not.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace torvane::fuzz
