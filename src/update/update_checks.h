#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/file_system.h"

namespace torvane {

// Whether what the signing tool printed names this team as the signer: exactly one line says which
// team it is. Others may hold the same words, such as the bundle identifier, which a stranger may
// choose.
[[nodiscard]] bool isSignedByTeam(std::string_view output, std::string_view team);

// Whether no link of a folder leads out of it. Only targets of the form "../../a/b" are taken for
// staying inside, and only as long as they do not climb above the folder.
[[nodiscard]] bool staysInside(const std::vector<SymbolicLink>& links);

}  // namespace torvane
