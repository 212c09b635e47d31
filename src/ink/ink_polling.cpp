// Live ink, fetched from the engine.

#include "app/bridge_delegate.h"

namespace torvane {

void BridgeDelegate::inkTick() {}

}  // namespace torvane
