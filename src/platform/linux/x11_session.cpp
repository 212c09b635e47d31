#include "platform/linux/x11_session.h"

#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>
#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <fstream>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace torvane {
namespace {

std::string processName(std::uint32_t pid) {
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/comm"), name);
  return name;
}

}  // namespace

struct X11Session::Connection {
  ~Connection() {
    if (hasAtoms) xcb_ewmh_connection_wipe(&ewmh);
    xcb_disconnect(xcb);
  }

  xcb_connection_t* xcb = nullptr;
  int screen = 0;
  bool hasAtoms = false;
  xcb_ewmh_connection_t ewmh = {};
};

namespace {

// The questions about one window are sent before the first answer is waited for: one round trip
// for them all, however many windows there are.
class WindowQuestions {
 public:
  WindowQuestions(xcb_ewmh_connection_t& ewmh, xcb_window_t window)
      : ewmh_(ewmh),
        attributes_(xcb_get_window_attributes(ewmh.connection, window)),
        geometry_(xcb_get_geometry(ewmh.connection, window)),
        position_(xcb_translate_coordinates(ewmh.connection, window, ewmh.screens[0]->root, 0, 0)),
        class_(xcb_icccm_get_wm_class(ewmh.connection, window)),
        pid_(xcb_ewmh_get_wm_pid(&ewmh, window)),
        states_(xcb_ewmh_get_wm_state(&ewmh, window)) {}

  // None for a window that cannot be seen, or is gone by now.
  [[nodiscard]] std::optional<X11Window> answer() const {
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(ewmh_.connection, attributes_, nullptr));
    const auto pixels = frame();
    X11Window window;
    window.className = className();
    std::uint32_t pid = 0;
    if (xcb_ewmh_get_wm_pid_reply(&ewmh_, pid_, &pid, nullptr)) {
      window.processName = processName(pid);
    }
    const bool isHidden = readStates(window);
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE || !pixels || isHidden) {
      return std::nullopt;
    }
    window.pixels = *pixels;
    return window;
  }

  [[nodiscard]] std::optional<QRect> frame() const {
    const XcbReply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(ewmh_.connection, geometry_, nullptr));
    const XcbReply<xcb_translate_coordinates_reply_t> at(
        xcb_translate_coordinates_reply(ewmh_.connection, position_, nullptr));
    if (!size || !at) return std::nullopt;
    return QRect(at->dst_x, at->dst_y, size->width, size->height);
  }

 private:
  [[nodiscard]] std::string className() const {
    xcb_icccm_get_wm_class_reply_t names;
    if (!xcb_icccm_get_wm_class_reply(ewmh_.connection, class_, &names, nullptr)) return {};
    std::string name = names.class_name ? names.class_name : "";
    xcb_icccm_get_wm_class_reply_wipe(&names);
    return name;
  }

  // Whether the window manager hides it.
  bool readStates(X11Window& window) const {
    xcb_ewmh_get_atoms_reply_t states;
    if (!xcb_ewmh_get_wm_state_reply(&ewmh_, states_, &states, nullptr)) return false;
    const auto has = [&](xcb_atom_t state) {
      return std::find(states.atoms, states.atoms + states.atoms_len, state) !=
             states.atoms + states.atoms_len;
    };
    window.isFullScreen = has(ewmh_._NET_WM_STATE_FULLSCREEN);
    const bool isHidden = has(ewmh_._NET_WM_STATE_HIDDEN);
    xcb_ewmh_get_atoms_reply_wipe(&states);
    return isHidden;
  }

  xcb_ewmh_connection_t& ewmh_;
  xcb_get_window_attributes_cookie_t attributes_;
  xcb_get_geometry_cookie_t geometry_;
  xcb_translate_coordinates_cookie_t position_;
  xcb_get_property_cookie_t class_, pid_, states_;
};

// From back to front. Some window managers (Xfce's) keep no such list until a window is raised for
// the first time; the one from old to new must do until then.
std::optional<std::vector<xcb_window_t>> windowList(xcb_ewmh_connection_t& ewmh, int screen) {
  const auto stacking = xcb_ewmh_get_client_list_stacking(&ewmh, screen);
  const auto byAge = xcb_ewmh_get_client_list(&ewmh, screen);
  std::optional<std::vector<xcb_window_t>> list;
  xcb_ewmh_get_windows_reply_t windows;
  const auto take = [&] {
    if (!list) list.emplace(windows.windows, windows.windows + windows.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&windows);
  };
  if (xcb_ewmh_get_client_list_stacking_reply(&ewmh, stacking, &windows, nullptr)) take();
  if (xcb_ewmh_get_client_list_reply(&ewmh, byAge, &windows, nullptr)) take();
  return list;
}

}  // namespace

X11Session::X11Session(std::unique_ptr<Connection> connection)
    : connection_(std::move(connection)) {}
X11Session::~X11Session() = default;

std::unique_ptr<X11Session> X11Session::open() {
  auto connection = std::make_unique<Connection>();
  connection->xcb = xcb_connect(nullptr, &connection->screen);
  if (xcb_connection_has_error(connection->xcb)) return nullptr;
  const auto atoms = xcb_ewmh_init_atoms(connection->xcb, &connection->ewmh);
  connection->hasAtoms = xcb_ewmh_init_atoms_replies(&connection->ewmh, atoms, nullptr);
  if (!connection->hasAtoms) return nullptr;
  return std::unique_ptr<X11Session>(new X11Session(std::move(connection)));
}

std::optional<std::vector<X11Window>> X11Session::windows() {
  auto& ewmh = connection_->ewmh;
  // Every client is told when the keyboard changes; nobody else takes that from here.
  while (XcbReply<xcb_generic_event_t>{xcb_poll_for_event(ewmh.connection)}) {
  }
  const auto list = windowList(ewmh, connection_->screen);
  if (!list) return std::nullopt;
  std::vector<WindowQuestions> questions;
  for (auto window = list->rbegin(); window != list->rend(); ++window) {
    questions.emplace_back(ewmh, *window);
  }
  std::vector<X11Window> windows;
  for (const auto& question : questions) {
    if (auto window = question.answer()) windows.push_back(std::move(*window));
  }
  return windows;
}

std::optional<QRect> X11Session::activeWindow() {
  auto& ewmh = connection_->ewmh;
  xcb_window_t window = XCB_WINDOW_NONE;
  const auto asked = xcb_ewmh_get_active_window(&ewmh, connection_->screen);
  if (!xcb_ewmh_get_active_window_reply(&ewmh, asked, &window, nullptr)) return std::nullopt;
  if (window == XCB_WINDOW_NONE) return std::nullopt;
  const WindowQuestions question(ewmh, window);
  const auto answer = question.answer();
  if (!answer) return std::nullopt;
  return answer->pixels;
}

}  // namespace torvane
