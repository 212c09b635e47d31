#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/bytes.h"

namespace torvane::test {

// One line of a file of hostile texts: "verdict name: text", where %XX in the text stands for the
// byte XX. Lines that begin with # are comments.
struct VectorCase {
  std::string verdict;
  std::string name;
  std::string text;
};

// The cases of a file in tests/vectors.
std::vector<VectorCase> readVectorCases(std::string_view name);

// A file of the source tree, by its path there; ends the test program when it cannot be read.
std::string readSourceFile(std::string_view path);

// A file or folder among the public test vectors kept outside the repository, in the folder that
// the environment or the build's TORVANE_VECTORS_DIR names; none when it is not there. A test
// that needs it is then to be skipped with kNoOutsideVectors.
std::optional<std::filesystem::path> outsideVectors(std::string_view name);
inline constexpr std::string_view kNoOutsideVectors =
    "TORVANE_VECTORS_DIR does not hold these public test vectors";

std::string readFile(const std::filesystem::path& path);

// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string& text);

// The bytes that hexadecimal digits stand for; anything else between them is passed over.
Bytes fromHex(std::string_view digits);
std::string toHex(ByteView bytes);

}  // namespace torvane::test
