// What the X server, the bus and the panels tell without being asked. news_test.py runs it on a
// desktop of its own.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <optional>
#include <string_view>

#include "platform/linux/tray_presence.h"
#include "platform/linux/x11_watch.h"
#include "platform/linux/xcb_reply.h"
#include "support/qt_event_loop.h"

namespace torvane {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kWatcherPath = "/StatusNotifierWatcher";

// Another program on the same X server.
class Neighbour {
 public:
  Neighbour() : connection_(xcb_connect(nullptr, nullptr)), window_(makeWindow()) {}
  ~Neighbour() { xcb_disconnect(connection_); }
  Neighbour(const Neighbour&) = delete;
  Neighbour& operator=(const Neighbour&) = delete;

  void own(std::string_view selection) { setOwner(selection, window_); }
  void disown(std::string_view selection) { setOwner(selection, XCB_WINDOW_NONE); }

  // One that no window manager holds back.
  xcb_window_t makeWindow() {
    const xcb_window_t window = xcb_generate_id(connection_);
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const std::uint32_t isUnmanaged = 1;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 50, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_OVERRIDE_REDIRECT,
                      &isUnmanaged);
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
    return window;
  }

  void raise(xcb_window_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(connection_);
  }

 private:
  void setOwner(std::string_view selection, xcb_window_t owner) {
    const auto asked = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(selection.size()),
                                       selection.data());
    const XcbReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection_, asked, nullptr));
    xcb_set_selection_owner(connection_, owner, atom->atom, XCB_CURRENT_TIME);
    xcb_flush(connection_);
  }

  xcb_connection_t* connection_;
  xcb_window_t window_;
};

class X11WatchTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(watch, nullptr); }

  Neighbour neighbour;
  std::unique_ptr<X11Watch> watch = X11Watch::open();
  int told = 0;
};

TEST_F(X11WatchTest, TellsOfATrayThatComesAndGoes) {
  watch->onTrayChange([this] { ++told; });
  neighbour.own("_NET_SYSTEM_TRAY_S0");
  EXPECT_TRUE(runEventsUntil([&] { return told == 1; }));
  EXPECT_TRUE(watch->hasTray());
  neighbour.disown("_NET_SYSTEM_TRAY_S0");
  EXPECT_TRUE(runEventsUntil([&] { return told == 2; }));
  EXPECT_FALSE(watch->hasTray());
}

TEST_F(X11WatchTest, KnowsWhatWasThereBefore) {
  neighbour.own("_NET_SYSTEM_TRAY_S0");
  neighbour.own("_NET_WM_CM_S0");
  EXPECT_TRUE(runEventsUntil([&] { return watch->hasTray() && watch->hasCompositor(); }));
  const auto later = X11Watch::open();
  EXPECT_TRUE(later->hasTray());
  EXPECT_TRUE(later->hasCompositor());
}

TEST_F(X11WatchTest, TellsOfACompositorThatComesAndGoes) {
  watch->onScreenChange([this] { ++told; });
  neighbour.own("_NET_WM_CM_S0");
  EXPECT_TRUE(runEventsUntil([&] { return told == 1; }));
  EXPECT_TRUE(watch->hasCompositor());
  neighbour.disown("_NET_WM_CM_S0");
  EXPECT_TRUE(runEventsUntil([&] { return told == 2; }));
  EXPECT_FALSE(watch->hasCompositor());
}

TEST_F(X11WatchTest, TellsOfWindowsThatComeToTheFront) {
  watch->onScreenChange([this] { ++told; });
  const auto first = neighbour.makeWindow();
  EXPECT_TRUE(runEventsUntil([&] { return told == 1; }));
  neighbour.makeWindow();
  EXPECT_TRUE(runEventsUntil([&] { return told == 2; }));
  neighbour.raise(first);
  EXPECT_TRUE(runEventsUntil([&] { return told == 3; }));
}

TEST_F(X11WatchTest, TellsNothingOfWindowsToNobody) {
  bool hasTrayChanged = false;
  watch->onTrayChange([&] { hasTrayChanged = true; });
  watch->onScreenChange([this] { ++told; });
  watch->onScreenChange({});
  neighbour.makeWindow();
  neighbour.own("_NET_SYSTEM_TRAY_S0");  // after that
  EXPECT_TRUE(runEventsUntil([&] { return hasTrayChanged; }));
  EXPECT_EQ(told, 0);
}

// The panel's side of the bus.
class Panel final : public QDBusVirtualObject {
 public:
  explicit Panel(const QDBusConnection& bus) : bus_(bus) {
    bus_.registerVirtualObject(kWatcherPath, this);
  }
  ~Panel() override { bus_.unregisterObject(kWatcherPath); }

  void come() { bus_.registerService(kWatcher); }
  void go() { bus_.unregisterService(kWatcher); }

  void setHost(bool isThere) {
    hasHost_ = isThere;
    bus_.send(QDBusMessage::createSignal(
        kWatcherPath, kWatcher,
        isThere ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered"));
  }

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost_))));
  }

 private:
  QDBusConnection bus_;
  bool hasHost_ = false;
};

class TrayPresenceTest : public testing::Test {
 protected:
  // The next answer, which nothing here asks for.
  std::optional<bool> nextAnswer() {
    answer.reset();
    (void)runEventsUntil([this] { return answer.has_value(); });
    return answer;
  }

  Panel panel{QDBusConnection::connectToBus(QDBusConnection::SessionBus, "panel")};
  std::unique_ptr<X11Watch> watch = X11Watch::open();
  std::optional<bool> answer;
  TrayPresence presence{watch.get(), [this](bool isPresent) { answer = isPresent; }};
};

TEST_F(TrayPresenceTest, IsToldOfAPanelAndItsHost) {
  panel.come();
  EXPECT_EQ(nextAnswer(), false);
  panel.setHost(true);
  EXPECT_EQ(nextAnswer(), true);
  panel.setHost(false);
  EXPECT_EQ(nextAnswer(), false);
  panel.go();
  EXPECT_EQ(nextAnswer(), false);
}

TEST_F(TrayPresenceTest, IsToldOfAnXEmbedTray) {
  Neighbour neighbour;
  neighbour.own("_NET_SYSTEM_TRAY_S0");
  EXPECT_EQ(nextAnswer(), true);
  neighbour.disown("_NET_SYSTEM_TRAY_S0");
  EXPECT_EQ(nextAnswer(), false);
}

}  // namespace
}  // namespace torvane

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
