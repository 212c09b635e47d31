#pragma once

#include <string>
#include <variant>

#include "torvane_ipad/helper_address.h"
#include "torvane_ipad/known_helpers.h"
#include "torvane_ipad/options.h"

namespace torvane::ipad {

// The helper that the command is meant for: the one named on the command line, that of this
// computer, the known or only one on the network, or the one that accepted this device last.
// Otherwise a sentence for the user.
[[nodiscard]] std::variant<HelperAddress, std::string> chooseHelper(const Options& options,
                                                                    const KnownHelpers& known);

// The choice among those on the network: one that is known, else the only one; null otherwise.
[[nodiscard]] const HelperAddress* pickHelper(const std::vector<HelperAddress>& found,
                                              const KnownHelpers& known);

}  // namespace torvane::ipad
