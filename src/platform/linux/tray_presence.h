#pragma once

namespace torvane {

// Whether the desktop has a status area now: a StatusNotifier host on the session bus or an XEmbed
// tray on the X display. Never starts one, and waits half a second at most.
[[nodiscard]] bool isTrayPresent();

}  // namespace torvane
