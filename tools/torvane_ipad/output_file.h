#pragma once

#include <string>
#include <string_view>

namespace torvane::ipad {

// Where the result of a command goes: a file, or standard output where its name is "-".

// Why what is no text cannot go there, in a sentence; empty when it seems that it can. Changes
// nothing, so that it can be asked before something that takes long.
[[nodiscard]] std::string outputProblem(const std::string& file);

// Writes the file aside and moves it into its place, so that there is the old file or the whole new
// one. What is no regular file, such as /dev/null, is written into. False when that fails.
[[nodiscard]] bool writeOutput(const std::string& file, std::string_view content);

// What to say when it did.
[[nodiscard]] std::string cannotWrite(const std::string& file);

}  // namespace torvane::ipad
