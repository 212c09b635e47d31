// The way from an offered build to its installed copy.
// Events: "Update Helper to Build …", a manual check that found a newer build.

#include "app/bridge_delegate.h"

namespace torvane {

void BridgeDelegate::installUpdate() {}

}  // namespace torvane
