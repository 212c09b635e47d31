#include "platform/linux/overlay_widget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QWindow>
#include <utility>

namespace torvane {
namespace {

Rect rectOf(const QRect& rect) {
  return {static_cast<double>(rect.x()), static_cast<double>(rect.y()),
          static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

QImage nothing() {
  QImage bit(1, 1, QImage::Format_MonoLSB);
  bit.fill(0);
  return bit;
}

// The colours as they are before they are made translucent.
QImage opaque(const QImage& pixels) {
  QImage image = pixels.convertToFormat(QImage::Format_ARGB32);
  image.reinterpretAsFormat(QImage::Format_RGB32);
  return image;
}

}  // namespace

OverlayWidget::OverlayWidget(OverlayView& content, const Clock& clock,
                             std::unique_ptr<WindowShape> shape)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus |
                           Qt::BypassWindowManagerHint),
      content_(content),
      clock_(clock),
      shape_(std::move(shape)) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle("Torvane ink");
  soon_.setSingleShot(true);
  connect(&soon_, &QTimer::timeout, this, [this] { repaint(asked_); });
  content_.setDisplay(this);
}

OverlayWidget::~OverlayWidget() {
  content_.setDisplay(nullptr);
}

void OverlayWidget::setTranslucent(bool isTranslucent) {
  if (isTranslucent == isTranslucent_) return;
  isTranslucent_ = isTranslucent;
  winId();  // makes the window, so that it has its shape before it is shown
  ink_ = {};
  if (isTranslucent) {
    shape_->makeWhole(*windowHandle());
  } else {
    shape_->set(*windowHandle(), nothing());
  }
  update();
}

void OverlayWidget::setHole(const QRect& hole) {
  if (hole == hole_) return;
  const QRegion spoilt = QRegion(hole_) | hole;
  hole_ = hole;
  update(spoilt.translated(-pos()));
}

void OverlayWidget::resizeEvent(QResizeEvent*) {
  content_.setSize(width(), height());
}

// One growing rectangle, so that what is painted is what the view was told. Qt's own update()
// would wait for 5 ms, which is most of what may pass between the iPad and the screen.
void OverlayWidget::invalidate(const Rect& viewPart) {
  if (viewPart.isEmpty()) return;
  const Rect whole = widenedToWhole(intersected(viewPart, rectOf(rect())));
  asked_ |= QRect(static_cast<int>(whole.x), static_cast<int>(whole.y),
                  static_cast<int>(whole.width), static_cast<int>(whole.height));
  soon_.start();
}

void OverlayWidget::paintEvent(QPaintEvent* event) {
  if (QRegion(asked_).subtracted(event->region()).isEmpty()) asked_ = {};
  const double ratio = devicePixelRatioF();
  if (ratio_ != 0 && ratio_ != ratio) content_.discardLayer();
  ratio_ = ratio;
  if (!isTranslucent_) ink_.setSize((QSizeF(size()) * ratio_).toSize());
  const QRegion hole = hole_.translated(-pos());
  for (const QRect& part : event->region().subtracted(hole)) paintPart(part);
  if (isTranslucent_) return;
  for (const QRect& part : event->region().intersected(hole)) leaveOut(part);
  applyShape();
}

void OverlayWidget::paintPart(const QRect& dirty) {
  QtCanvas canvas(rectOf(dirty), ratio_);
  content_.draw(canvas, rectOf(dirty), clock_.mediaTime());
  if (!isTranslucent_) ink_.replacePart(canvas.origin(), canvas.image());
  QPainter painter(this);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.scale(1 / ratio_, 1 / ratio_);
  painter.drawImage(canvas.origin(), isTranslucent_ ? canvas.image() : opaque(canvas.image()));
}

void OverlayWidget::leaveOut(const QRect& part) {
  const QtCanvas nothing(rectOf(part), ratio_);
  ink_.replacePart(nothing.origin(), nothing.image());
}

// The window's own shape, which holds before what was painted reaches the screen: a widget's mask
// would keep it from ever painting what lies outside.
void OverlayWidget::applyShape() {
  const auto change = ink_.takeChange();
  if (!change) return;
  if (change->takesAway) {
    shape_->set(*windowHandle(), ink_.bits());
  } else {
    shape_->add(*windowHandle(), change->where.topLeft(), ink_.bits().copy(change->where));
  }
}

}  // namespace torvane
