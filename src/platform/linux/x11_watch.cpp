#include "platform/linux/x11_watch.h"

#include <string>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace torvane {
namespace {

constexpr int kPauseMilliseconds = 500;

xcb_window_t rootOf(xcb_connection_t* connection, int screen) {
  auto each = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screen > 0 && each.rem > 1; --screen) xcb_screen_next(&each);
  return each.data->root;
}

bool isAboutWindows(const xcb_generic_event_t& event) {
  const int type = event.response_type & 0x7f;  // the top bit: from another client
  return type >= XCB_CREATE_NOTIFY && type <= XCB_CIRCULATE_NOTIFY;
}

}  // namespace

std::unique_ptr<X11Watch> X11Watch::open() {
  int screen = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screen);
  if (xcb_connection_has_error(connection)) {
    xcb_disconnect(connection);
    return nullptr;
  }
  return std::unique_ptr<X11Watch>(new X11Watch(connection, screen, rootOf(connection, screen)));
}

X11Watch::X11Watch(xcb_connection_t* connection, int screen, xcb_window_t root)
    : connection_(connection),
      root_(root),
      compositor_(connection, root, "_NET_WM_CM_S" + std::to_string(screen)),
      tray_(connection, root, "_NET_SYSTEM_TRAY_S" + std::to_string(screen)),
      events_(xcb_get_file_descriptor(connection), QSocketNotifier::Read) {
  QObject::connect(&events_, &QSocketNotifier::activated, &events_, [this] { takeEvents(); });
  pause_.setSingleShot(true);
  pause_.setInterval(kPauseMilliseconds);
  QObject::connect(&pause_, &QTimer::timeout, &events_, [this] { takeEvents(); });
  takeEvents();  // which libxcb may have read while it waited for answers
}

X11Watch::~X11Watch() {
  events_.setEnabled(false);  // before its descriptor is somebody else's
  xcb_disconnect(connection_);
}

void X11Watch::onScreenChange(std::function<void()> onChange) {
  const std::uint32_t wanted = onChange ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : 0;
  const auto request =
      xcb_change_window_attributes_checked(connection_, root_, XCB_CW_EVENT_MASK, &wanted);
  const XcbReply<xcb_generic_error_t> done(xcb_request_check(connection_, request));
  onScreenChange_ = {};
  takeEvents();  // which libxcb may have read while it waited, and which are no news by now
  onScreenChange_ = std::move(onChange);
}

void X11Watch::takeEvents() {
  bool hasTrayChanged = false, hasScreenChanged = false;
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    if (tray_.take(*event)) {
      hasTrayChanged = true;
    } else if (compositor_.take(*event) || isAboutWindows(*event)) {
      hasScreenChanged = true;
    }
  }
  if (hasScreenChanged) pause_.start();
  events_.setEnabled(!pause_.isActive() && xcb_connection_has_error(connection_) == 0);
  if (hasTrayChanged && onTrayChange_) onTrayChange_();
  if (hasScreenChanged && onScreenChange_) onScreenChange_();
}

}  // namespace torvane
