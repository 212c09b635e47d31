#include "update/update_checks.h"

#include <algorithm>
#include <array>

namespace torvane {
namespace {

constexpr std::string_view kTeamKey = "TeamIdentifier=";

// Takes the part of a text before the next separator, and the separator.
std::string_view takePart(std::string_view& text, char separator) {
  const std::string_view part = text.substr(0, text.find(separator));
  text.remove_prefix(std::min(part.size() + 1, text.size()));
  return part;
}

// A link's own folder is a real one, so every ".." at the beginning of its target climbs one level
// of the tree. Behind a name, which may be another link's, it could climb from anywhere.
bool staysInside(const SymbolicLink& link) {
  if (link.target.empty() || link.target.front() == '/') return false;
  auto depth = std::count(link.path.begin(), link.path.end(), '/');
  bool hasName = false;
  for (std::string_view rest = link.target; !rest.empty();) {
    const std::string_view part = takePart(rest, '/');
    if (part == "..") {
      if (hasName || depth-- == 0) return false;
    } else if (!part.empty() && part != ".") {
      hasName = true;
    }
  }
  return true;
}

}  // namespace

bool isSignedByTeam(std::string_view output, std::string_view team) {
  int lines = 0;
  bool isOurs = false;
  while (!output.empty()) {
    std::string_view line = takePart(output, '\n');
    if (!line.starts_with(kTeamKey)) continue;
    ++lines;
    isOurs = line.substr(kTeamKey.size()) == team;
  }
  return lines == 1 && isOurs;
}

std::string teamRequirement(const std::string& team) {
  return "anchor apple generic"
         " and certificate 1[field.1.2.840.113635.100.6.2.6] exists"
         " and certificate leaf[field.1.2.840.113635.100.6.1.13] exists"
         " and certificate leaf[subject.OU] = \"" +
         team + "\"";
}

// POSIX's ENOSPC and EDQUOT, in the words of the Mac's C library and of GNU's.
bool saysDiskIsFull(std::string_view output) {
  constexpr std::array<std::string_view, 3> kWords{"No space left on device", "Disc quota exceeded",
                                                   "Disk quota exceeded"};
  return std::any_of(kWords.begin(), kWords.end(), [&](std::string_view words) {
    return output.find(words) != std::string_view::npos;
  });
}

bool staysInside(const std::vector<SymbolicLink>& links) {
  return std::all_of(links.begin(), links.end(),
                     [](const SymbolicLink& link) { return staysInside(link); });
}

}  // namespace torvane
