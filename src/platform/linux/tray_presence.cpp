#include "platform/linux/tray_presence.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <utility>

namespace torvane {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kWatcherPath = "/StatusNotifierWatcher";
constexpr int kPatienceMilliseconds = 2000;
// A panel that is just coming says so before it is ready, and may be of both kinds.
constexpr int kSettlingMilliseconds = 500;

}  // namespace

TrayPresence::TrayPresence(X11Watch* x11, std::function<void(bool)> onAnswer)
    : x11_(x11), onAnswer_(std::move(onAnswer)) {
  soon_.setSingleShot(true);
  soon_.setInterval(kSettlingMilliseconds);
  QObject::connect(&soon_, &QTimer::timeout, &soon_, [this] { ask(); });
  if (x11_) x11_->onTrayChange([this] { soon_.start(); });
  listenToPanels();
}

TrayPresence::~TrayPresence() {
  if (x11_) x11_->onTrayChange({});
}

// Whoever says so: all that it leads to is a question.
void TrayPresence::listenToPanels() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  watcherService_.setConnection(bus);
  watcherService_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  watcherService_.addWatchedService(kWatcher);
  QObject::connect(&watcherService_, &QDBusServiceWatcher::serviceOwnerChanged, &soon_,
                   [this] { soon_.start(); });
  for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
    bus.connect({}, kWatcherPath, kWatcher, change, &soon_, SLOT(start()));
  }
}

// Qt puts icons into such a tray only when it is on X itself.
bool TrayPresence::hasXEmbedTray() {
  return x11_ != nullptr && QGuiApplication::platformName() == "xcb" && x11_->hasTray();
}

void TrayPresence::ask() {
  if (hasXEmbedTray()) return onAnswer_(true);
  isToAskAgain_ = waiting_ != nullptr;
  if (!waiting_) askStatusNotifierHost();
}

// The watcher may be there before the panel that shows the icons.
void TrayPresence::askStatusNotifierHost() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return onAnswer_(false);
  auto question = QDBusMessage::createMethodCall(kWatcher, kWatcherPath,
                                                 "org.freedesktop.DBus.Properties", "Get");
  question << kWatcher << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  waiting_ =
      std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(question, kPatienceMilliseconds));
  QObject::connect(waiting_.get(), &QDBusPendingCallWatcher::finished, waiting_.get(), [this] {
    const QDBusPendingReply<QDBusVariant> answer = *waiting_;
    waiting_.release()->deleteLater();  // it is the one that calls here
    onAnswer_(hasXEmbedTray() || (answer.isValid() && answer.value().variant().toBool()));
    if (isToAskAgain_) ask();
  });
}

}  // namespace torvane
