// Whether the engine is up, learnt only by asking it.
// Events: the status timer, an engine's start, stop or exit. Fields: serverRunning.
// Ports: HttpSession.

#include "app/bridge_delegate.h"

namespace torvane {
namespace {

constexpr double kProbeTimeout = 2.0;

}  // namespace

void BridgeDelegate::pollTick() {
  checkStatus();
}

void BridgeDelegate::checkStatus() {
  assertMainThread();
  platform_.http.shared().dataTask(
      engineRequest("/api/state", kProbeTimeout), [this, main = main_](const HttpResult& result) {
        const bool running =
            !result.error.has_value() && result.response && result.response->status == 200;
        main.async([this, running] {
          serverRunning = running;
          updateIcon();
        });
      });
}

}  // namespace torvane
