#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string_view>

namespace torvane {

// Whether an X selection has an owner: that is how a desktop's compositor and its tray say that
// they are there (EWMH, _NET_WM_CM_Sn; System Tray Protocol, _NET_SYSTEM_TRAY_Sn). The X server is
// asked once and then tells of changes. Main thread only.
class SelectionWatch {
 public:
  SelectionWatch(xcb_connection_t* connection, xcb_window_t root, std::string_view selection);

  [[nodiscard]] bool hasOwner();

  // Whether an event of the connection is about the owner, who is known then.
  bool take(const xcb_generic_event_t& event);

 private:
  void watch(xcb_window_t root);
  void ask();

  xcb_connection_t* connection_;
  xcb_atom_t selection_;
  std::uint8_t changed_ = 0;  // the event's number; 0 when the server cannot tell
  bool hasOwner_ = false;
};

}  // namespace torvane
