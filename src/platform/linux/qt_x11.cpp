#include "platform/linux/qt_x11.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/linux/xcb_reply.h"

namespace torvane {
namespace {

constexpr int kButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
constexpr std::string_view kActiveWindow = "_NET_ACTIVE_WINDOW";
constexpr std::uint32_t kUsersWish = 2;  // where a request comes from: not from the program itself

// Null where there is no X server. Qt's platform without a screen has the interface all the same.
xcb_connection_t* connection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

xcb_window_t rootOf(xcb_connection_t* x11) {
  return xcb_setup_roots_iterator(xcb_get_setup(x11)).data->root;
}

}  // namespace

// Both questions are sent before the first answer is waited for.
bool isInputHeld() {
  xcb_connection_t* x11 = connection();
  if (!x11) return false;
  const auto keysAsked = xcb_query_keymap(x11);
  const auto pointerAsked = xcb_query_pointer(x11, rootOf(x11));
  const XcbReply<xcb_query_keymap_reply_t> keys(xcb_query_keymap_reply(x11, keysAsked, nullptr));
  const XcbReply<xcb_query_pointer_reply_t> pointer(
      xcb_query_pointer_reply(x11, pointerAsked, nullptr));
  const bool hasKey = keys && std::any_of(std::begin(keys->keys), std::end(keys->keys),
                                          [](std::uint8_t eight) { return eight != 0; });
  return hasKey || (pointer && (pointer->mask & kButtons) != 0);
}

void bringToFrontRegardless(const QWindow& window) {
  xcb_connection_t* x11 = connection();
  if (!x11) return;
  const auto asked = xcb_intern_atom(x11, 0, kActiveWindow.size(), kActiveWindow.data());
  const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(x11, asked, nullptr));
  if (!atom) return;
  xcb_client_message_event_t event = {};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = static_cast<xcb_window_t>(window.winId());
  event.type = atom->atom;
  event.data.data32[0] = kUsersWish;
  event.data.data32[1] = XCB_CURRENT_TIME;
  xcb_send_event(x11, 0, rootOf(x11),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(x11);
}

}  // namespace torvane
