#include "platform/linux/compositor_watch.h"

#include <xcb/xfixes.h>

#include "platform/linux/xcb_reply.h"

namespace torvane {

// The question comes second: what changes in between is told.
CompositorWatch::CompositorWatch(xcb_connection_t* connection, xcb_window_t root,
                                 xcb_atom_t selection)
    : connection_(connection), selection_(selection) {
  watch(root);
  hasCompositor_ = ask();
}

void CompositorWatch::watch(xcb_window_t root) {
  const auto* extension = xcb_get_extension_data(connection_, &xcb_xfixes_id);
  if (extension == nullptr || extension->present == 0) return;
  // The server takes no other request before this one.
  const auto version = xcb_xfixes_query_version(connection_, 1, 0);
  const XcbReply<xcb_xfixes_query_version_reply_t> known(
      xcb_xfixes_query_version_reply(connection_, version, nullptr));
  if (!known) return;
  xcb_xfixes_select_selection_input(connection_, root, selection_,
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  changed_ = static_cast<std::uint8_t>(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
}

bool CompositorWatch::ask() {
  const auto asked = xcb_get_selection_owner(connection_, selection_);
  const XcbReply<xcb_get_selection_owner_reply_t> answer(
      xcb_get_selection_owner_reply(connection_, asked, nullptr));
  return answer && answer->owner != XCB_WINDOW_NONE;
}

bool CompositorWatch::hasCompositor() {
  if (changed_ == 0) return ask();
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    if ((event->response_type & 0x7f) != changed_) continue;  // the top bit: from a client
    const auto* change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event.get());
    hasCompositor_ = change->owner != XCB_WINDOW_NONE;
  }
  return hasCompositor_;
}

}  // namespace torvane
