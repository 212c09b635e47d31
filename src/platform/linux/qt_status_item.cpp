#include "platform/linux/qt_status_item.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <chrono>
#include <functional>
#include <utility>

#include "platform/linux/qt_text.h"
#include "platform/linux/symbol_icon.h"

namespace torvane {
namespace {

// Between two looks for a tray; later only for panels that do not say when they come and go
constexpr std::chrono::milliseconds kWhileAwaited{500};
constexpr std::chrono::milliseconds kLater{5000};

constexpr std::chrono::milliseconds kPatience{5000};  // a panel may start after its programs

}  // namespace

// Tells when the desktop turns from light to dark or back.
class QtStatusItem::PaletteListener final : public QObject {
 public:
  explicit PaletteListener(std::function<void()> onChange) : onChange_(std::move(onChange)) {
    qApp->installEventFilter(this);
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) onChange_();
    return false;
  }

 private:
  std::function<void()> onChange_;
};

QtStatusItem::QtStatusItem(X11Watch* x11)
    : paletteListener_(std::make_unique<PaletteListener>([this] { showIcon(); })),
      presence_(x11, [this](bool isPresent) { trayWasLookedFor(isPresent); }) {
  QObject::connect(&trayTimer_, &QTimer::timeout, &trayTimer_, [this] { presence_.ask(); });
  trayTimer_.start(kWhileAwaited);
  presence_.ask();
}

QtStatusItem::~QtStatusItem() = default;

void QtStatusItem::trayWasLookedFor(bool isPresent) {
  if (!isPresent) return standInForTray();
  withoutTray_.invalidate();
  if (std::exchange(isStandingIn_, false)) standIn_.hide();
  if (!tray_) putIntoTray();
  trayTimer_.setInterval(kLater);
}

// Once: a window that its user has closed stays closed.
void QtStatusItem::standInForTray() {
  trayTimer_.setInterval(isStandingIn_ ? kLater : kWhileAwaited);
  if (!withoutTray_.isValid()) withoutTray_.start();
  if (isStandingIn_ || !withoutTray_.hasExpired(kPatience.count())) return;
  isStandingIn_ = true;
  standIn_.showBehind();
}

void QtStatusItem::putIntoTray() {
  tray_ = std::make_unique<QSystemTrayIcon>();
  QObject::connect(tray_.get(), &QSystemTrayIcon::activated, tray_.get(),
                   [this](auto reason) { openAtPointer(reason); });
  tray_->setContextMenu(&contextMenu_.menu());
  contextMenu_.update();
  showIcon();
}

void QtStatusItem::setIcon(const StatusIcon& icon) {
  if (icon_ != icon) {
    icon_ = icon;
    showIcon();
  }
  contextMenu_.update();
}

void QtStatusItem::showIcon() {
  if (!icon_) return;
  standIn_.setIcon(*icon_);
  if (!tray_) return;
  tray_->setToolTip(plainToolTip(icon_->toolTip));
  tray_->setIcon(symbolIcon(icon_->symbolName, QApplication::palette(), icon_->appearsDisabled));
  tray_->show();
}

void QtStatusItem::setMenu(MenuDelegate& delegate) {
  contextMenu_.setDelegate(delegate);
  clickMenu_.setDelegate(delegate);
  standIn_.setMenu(delegate);
  contextMenu_.update();
}

void QtStatusItem::openAtPointer(QSystemTrayIcon::ActivationReason reason) {
  if (reason == QSystemTrayIcon::Trigger) clickMenu_.menu().popup(QCursor::pos());
}

std::unique_ptr<StatusItem> QtStatusBar::makeStatusItem() {
  auto item = std::make_unique<QtStatusItem>(x11_);
  window_ = &item->standIn();
  return item;
}

void QtStatusBar::showWindow() {
  if (window_) window_->showInFront();
}

}  // namespace torvane
