#pragma once

#include <filesystem>

namespace torvane {

// The project's folder, which tests read documents and scripts from.
[[nodiscard]] std::filesystem::path sourceFolder();

// The folder of public test vectors that the environment's TORVANE_VECTORS_DIR names, or that the
// build was configured with; empty where there is none.
[[nodiscard]] std::filesystem::path vectorsFolder();

}  // namespace torvane
