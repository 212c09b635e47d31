#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ports/file_system.h"

namespace torvane {

// Whether what the signing tool printed names this team as the signer: exactly one line says which
// team it is. Others may hold the same words, such as the bundle identifier, which a stranger may
// choose.
[[nodiscard]] bool isSignedByTeam(std::string_view output, std::string_view team);

// Who has to have signed an update, in the language of the Mac's code signing: a developer of this
// team, with a certificate for applications that are distributed outside of the store. Source:
// Apple's technical note TN3127, "Inside Code Signing: Requirements".
[[nodiscard]] std::string teamRequirement(const std::string& team);

// Whether a tool says that there was no room for what it had to write, or no more for this user.
[[nodiscard]] bool saysDiskIsFull(std::string_view output);

// Whether no link of a folder leads out of it. Only targets of the form "../../a/b" are taken for
// staying inside, and only as long as they do not climb above the folder.
[[nodiscard]] bool staysInside(const std::vector<SymbolicLink>& links);

}  // namespace torvane
