#include "support/folders.h"

#include <cstdlib>

namespace torvane {

std::filesystem::path sourceFolder() {
  return TORVANE_SOURCE_DIR;
}

std::filesystem::path vectorsFolder() {
  const char* fromEnvironment = std::getenv("TORVANE_VECTORS_DIR");
  return fromEnvironment != nullptr ? fromEnvironment : TORVANE_VECTORS_DIR;
}

}  // namespace torvane
