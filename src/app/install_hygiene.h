#pragma once

#include "ports/platform.h"

namespace torvane {

// Housekeeping of the installed copy. For the main thread.

// Ends the other copies that run, and throws away the one under the former name.
void retireOldNamedApp(const Platform& platform);

// Has the permissions asked for afresh that stand for an executable which was replaced, once for
// each executable. Waits for the tools that do it.
void tccSelfHealIfReplaced(const Platform& platform);

[[nodiscard]] bool hasFullDiskAccess(const Platform& platform);

}  // namespace torvane
