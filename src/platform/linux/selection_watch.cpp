#include "platform/linux/selection_watch.h"

#include <xcb/xfixes.h>

#include "platform/linux/xcb_reply.h"

namespace torvane {
namespace {

xcb_atom_t atomOf(xcb_connection_t* connection, std::string_view name) {
  const auto asked =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const XcbReply<xcb_intern_atom_reply_t> answer(xcb_intern_atom_reply(connection, asked, nullptr));
  return answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace

// The question comes second: what changes in between is told.
SelectionWatch::SelectionWatch(xcb_connection_t* connection, xcb_window_t root,
                               std::string_view selection)
    : connection_(connection), selection_(atomOf(connection, selection)) {
  watch(root);
  ask();
}

void SelectionWatch::watch(xcb_window_t root) {
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

void SelectionWatch::ask() {
  const auto asked = xcb_get_selection_owner(connection_, selection_);
  const XcbReply<xcb_get_selection_owner_reply_t> answer(
      xcb_get_selection_owner_reply(connection_, asked, nullptr));
  hasOwner_ = answer && answer->owner != XCB_WINDOW_NONE;
}

bool SelectionWatch::hasOwner() {
  if (changed_ == 0) ask();
  return hasOwner_;
}

bool SelectionWatch::take(const xcb_generic_event_t& event) {
  if (changed_ == 0 || (event.response_type & 0x7f) != changed_) return false;
  const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
  if (change.selection != selection_) return false;
  hasOwner_ = change.owner != XCB_WINDOW_NONE;
  return true;
}

}  // namespace torvane
