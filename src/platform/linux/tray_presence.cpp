#include "platform/linux/tray_presence.h"

#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QVariant>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace torvane {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr int kPatienceMilliseconds = 500;

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};

// The watcher may be there before the panel that shows the icons.
bool hasStatusNotifierHost() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected() || !bus.interface()->isServiceRegistered(kWatcher)) return false;
  auto question = QDBusMessage::createMethodCall(kWatcher, "/StatusNotifierWatcher",
                                                 "org.freedesktop.DBus.Properties", "Get");
  question << kWatcher << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  const QDBusMessage answer = bus.call(question, QDBus::Block, kPatienceMilliseconds);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return false;
  return answer.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

bool hasXEmbedTray() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  // Qt's platform without a screen has the interface, but no server behind it.
  if (x11 == nullptr || x11->connection() == nullptr) return false;
  xcb_connection_t* connection = x11->connection();
  constexpr std::string_view kSelection = "_NET_SYSTEM_TRAY_S0";
  const auto atomRequest = xcb_intern_atom(
      connection, 0, static_cast<std::uint16_t>(kSelection.size()), kSelection.data());
  const std::unique_ptr<xcb_intern_atom_reply_t, FreeReply> atom(
      xcb_intern_atom_reply(connection, atomRequest, nullptr));
  if (!atom) return false;
  const auto ownerRequest = xcb_get_selection_owner(connection, atom->atom);
  const std::unique_ptr<xcb_get_selection_owner_reply_t, FreeReply> owner(
      xcb_get_selection_owner_reply(connection, ownerRequest, nullptr));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace

bool isTrayPresent() {
  return hasStatusNotifierHost() || hasXEmbedTray();
}

}  // namespace torvane
