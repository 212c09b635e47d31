// Any bytes as a version file, as two builds, as what the system's tools print, and as a link in an
// archive, each held against a second way to decide.

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>

#include "protocol/numeric_characters.h"
#include "protocol/utf8.h"
#include "require.h"
#include "update/build_number.h"
#include "update/update_checks.h"

using namespace torvane;
using fuzz::require;

namespace {

bool isDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void checkVersionFile(std::string_view text) {
  const auto build = parseBuildNumber(asBytes(text));
  const std::string_view trimmed = trimmedText(text);
  require(text.find(trimmed) != std::string_view::npos, "trimming only cuts");
  require(trimmedText(trimmed) == trimmed, "and leaves nothing to cut");
  if (!build) {
    require(!isDigits(trimmed) || trimmed.size() > 31, "digits are a build");
    return;
  }
  require(*build == trimmed, "a build is the text without its white space");
  std::size_t length = 0;
  for (std::string_view rest = *build; !rest.empty(); ++length) {
    require(isNumericCharacter(takeCharacter(rest).value()), "a build is of numbers");
  }
  require(length > 0 && length < 32, "of fewer than 32");
}

std::string_view withoutZeros(std::string_view digits) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

void checkComparison(std::string_view left, std::string_view right) {
  const auto order = compareBuilds(left, right);
  require(order == 0 || (order < 0) == (compareBuilds(right, left) > 0), "one is the greater");
  require(compareBuilds(left, left) == 0, "a build equals itself");
  if (!isDigits(left) || !isDigits(right)) return;
  const auto one = withoutZeros(left);
  const auto other = withoutZeros(right);
  const bool isLess = one.size() != other.size() ? one.size() < other.size() : one < other;
  require((order < 0) == isLess && (order == 0) == (one == other), "digits have their value");
}

void checkSigner(const std::string& output) {
  std::istringstream lines(output);
  int named = 0;
  int ours = 0;
  for (std::string line; std::getline(lines, line);) {
    named += line.rfind("TeamIdentifier=", 0) == 0 ? 1 : 0;
    ours += line == "TeamIdentifier=ZQ4W8N2HJT" ? 1 : 0;
  }
  require(isSignedByTeam(output, "ZQ4W8N2HJT") == (named == 1 && ours == 1), "one line names us");
}

void checkLink(const std::string& path, const std::string& target) {
  if (path.empty() || path.front() == '/' || path.find("..") != std::string::npos) return;
  if (path.find("//") != std::string::npos || path.find("./") != std::string::npos) return;
  if (!staysInside({{path, target}})) return;
  const auto folder = std::filesystem::path("/a/b/app");
  const auto end = ((folder / path).parent_path() / target).lexically_normal();
  const auto inside = end.lexically_relative(folder);
  require(!inside.empty() && *inside.begin() != "..", "a link that stays inside ends inside");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(asText({data, size}));
  const std::string first = text.substr(0, text.find('|'));
  const std::string second = text.substr(std::min(first.size() + 1, text.size()));
  checkVersionFile(text);
  checkComparison(first, second);
  checkSigner(text);
  checkLink(first, second);
  return 0;
}
