// The menu behind the status icon, rebuilt each time it opens.

#include "app/bridge_delegate.h"

namespace torvane {

std::vector<MenuItem> BridgeDelegate::menuNeedsUpdate() {
  assertMainThread();
  return {{"Quit", [this] { quit(); }}};
}

}  // namespace torvane
