#include "platform/linux/overlay_widget.h"

#include <QBitmap>
#include <QPaintEvent>
#include <QPainter>

namespace torvane {
namespace {

Rect rectOf(const QRect& rect) {
  return {static_cast<double>(rect.x()), static_cast<double>(rect.y()),
          static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

// The colours as they are before they are made translucent.
QImage opaque(const QImage& pixels) {
  QImage image = pixels.convertToFormat(QImage::Format_ARGB32);
  image.reinterpretAsFormat(QImage::Format_RGB32);
  return image;
}

}  // namespace

OverlayWidget::OverlayWidget(OverlayView& content, const Clock& clock)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus |
                           Qt::BypassWindowManagerHint),
      content_(content),
      clock_(clock) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle("Torvane ink");
  content_.setDisplay(this);
}

OverlayWidget::~OverlayWidget() {
  content_.setDisplay(nullptr);
}

void OverlayWidget::setTranslucent(bool isTranslucent) {
  if (isTranslucent == isTranslucent_) return;
  isTranslucent_ = isTranslucent;
  shape_ = {};
  applyShape();
  update();
}

void OverlayWidget::resizeEvent(QResizeEvent*) {
  shape_ = {};
  content_.setSize(width(), height());
}

// One growing rectangle, so that what is painted is what the view was told.
void OverlayWidget::invalidate(const Rect& viewPart) {
  if (viewPart.isEmpty()) return;
  const Rect whole = widenedToWhole(intersected(viewPart, rectOf(rect())));
  asked_ |= QRect(static_cast<int>(whole.x), static_cast<int>(whole.y),
                  static_cast<int>(whole.width), static_cast<int>(whole.height));
  update(asked_);
}

void OverlayWidget::paintEvent(QPaintEvent* event) {
  asked_ = {};
  const double ratio = devicePixelRatioF();
  if (ratio_ != 0 && ratio_ != ratio) content_.discardLayer();
  ratio_ = ratio;
  for (const QRect& part : event->region()) paintPart(part);
}

void OverlayWidget::paintPart(const QRect& dirty) {
  QtCanvas canvas(rectOf(dirty), ratio_);
  content_.draw(canvas, rectOf(dirty), clock_.mediaTime());
  if (!isTranslucent_) cutOut(dirty, canvas.image());
  QPainter painter(this);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.scale(1 / ratio_, 1 / ratio_);
  painter.drawImage(canvas.origin(), isTranslucent_ ? canvas.image() : opaque(canvas.image()));
}

void OverlayWidget::cutOut(const QRect& dirty, const QImage& pixels) {
  const QImage drawn =
      pixels.createAlphaMask(Qt::ThresholdDither).convertToFormat(QImage::Format_Mono);
  const QRegion ink(QBitmap::fromImage(drawn.scaled(dirty.size())));
  const QRegion shape = shape_.subtracted(dirty).united(ink.translated(dirty.topLeft()));
  if (shape == shape_) return;
  shape_ = shape;
  QMetaObject::invokeMethod(this, &OverlayWidget::applyShape, Qt::QueuedConnection);
}

// An empty shape means none to Qt: a pixel outside stands for nothing. What the shape takes in
// anew was cut off when it was painted, so it is painted again.
void OverlayWidget::applyShape() {
  if (isTranslucent_) {
    clearMask();
    return;
  }
  const QRegion grown = shape_.subtracted(mask());
  setMask(shape_.isEmpty() ? QRegion(-1, -1, 1, 1) : shape_);
  update(grown);
}

}  // namespace torvane
