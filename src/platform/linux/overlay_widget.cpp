#include "platform/linux/overlay_widget.h"

#include <QBitmap>
#include <QPaintEvent>
#include <QPainter>
#include <QWindow>

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
  shape_ = {};
  winId();  // makes the window, so that it has its shape before it is shown
  applyShape();
  update();
}

void OverlayWidget::setHole(const QRect& hole) {
  if (hole == hole_) return;
  const QRegion spoilt = QRegion(hole_) | hole;
  hole_ = hole;
  update(spoilt.translated(-pos()));
}

void OverlayWidget::resizeEvent(QResizeEvent*) {
  shape_ = {};
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
  const QRegion hole = hole_.translated(-pos());
  for (const QRect& part : event->region().subtracted(hole)) paintPart(part);
  shape_ = shape_.subtracted(hole);
  applyShape();
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
  shape_ = shape_.subtracted(dirty).united(ink.translated(dirty.topLeft()));
}

// The window's own shape, which holds before what was painted reaches the screen: a widget's mask
// would keep it from ever painting what lies outside. An empty shape means none to Qt: a pixel
// outside stands for nothing.
void OverlayWidget::applyShape() {
  const QRegion nothing(-1, -1, 1, 1);
  const QRegion shape = isTranslucent_ ? QRegion() : shape_.isEmpty() ? nothing : shape_;
  if (windowHandle()->mask() != shape) windowHandle()->setMask(shape);
}

}  // namespace torvane
