#pragma once

#include <xcb/xcb.h>

#include <cstdint>

namespace torvane {

// Whether windows can be translucent: somebody owns the selection that compositors take (EWMH,
// _NET_WM_CM_Sn). The X server is asked once and then tells of changes, so that looking costs no
// round trip. Takes the events of its connection; main thread only.
class CompositorWatch {
 public:
  CompositorWatch(xcb_connection_t* connection, xcb_window_t root, xcb_atom_t selection);

  [[nodiscard]] bool hasCompositor();

 private:
  void watch(xcb_window_t root);
  bool ask();

  xcb_connection_t* connection_;
  xcb_atom_t selection_;
  std::uint8_t changed_ = 0;  // the event's number; 0 when the server cannot tell
  bool hasCompositor_ = false;
};

}  // namespace torvane
