#include "platform/linux/tray_presence.h"

#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace torvane {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr int kPatienceMilliseconds = 2000;

bool hasXEmbedTray() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  // Qt's platform without a screen has the interface, but no server behind it.
  if (x11 == nullptr || x11->connection() == nullptr) return false;
  xcb_connection_t* connection = x11->connection();
  constexpr std::string_view kSelection = "_NET_SYSTEM_TRAY_S0";
  const auto atomRequest = xcb_intern_atom(
      connection, 0, static_cast<std::uint16_t>(kSelection.size()), kSelection.data());
  const XcbReply<xcb_intern_atom_reply_t> atom(
      xcb_intern_atom_reply(connection, atomRequest, nullptr));
  if (!atom) return false;
  const auto ownerRequest = xcb_get_selection_owner(connection, atom->atom);
  const XcbReply<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(connection, ownerRequest, nullptr));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace

TrayPresence::TrayPresence(std::function<void(bool)> onAnswer) : onAnswer_(std::move(onAnswer)) {}

void TrayPresence::ask() {
  if (waiting_) return;
  if (hasXEmbedTray()) return onAnswer_(true);
  askStatusNotifierHost();
}

// The watcher may be there before the panel that shows the icons.
void TrayPresence::askStatusNotifierHost() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return onAnswer_(false);
  auto question = QDBusMessage::createMethodCall(kWatcher, "/StatusNotifierWatcher",
                                                 "org.freedesktop.DBus.Properties", "Get");
  question << kWatcher << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  waiting_ =
      std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(question, kPatienceMilliseconds));
  QObject::connect(waiting_.get(), &QDBusPendingCallWatcher::finished, waiting_.get(), [this] {
    const QDBusPendingReply<QDBusVariant> answer = *waiting_;
    waiting_.release()->deleteLater();  // it is the one that calls here
    onAnswer_(answer.isValid() && answer.value().variant().toBool());
  });
}

}  // namespace torvane
