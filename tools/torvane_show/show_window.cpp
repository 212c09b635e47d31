#include "torvane_show/show_window.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>
#include <algorithm>

namespace torvane::show {
namespace {

constexpr int kSharpKept = 4;  // of 8 MB each on a usual screen, of 33 on a large one
constexpr int kSmallKept = 2 * kSmallAround + 20;

}  // namespace

ShowWindow::ShowWindow(const Deck& deck, PdfWorker& worker)
    : deck_(deck), worker_(worker), sharp_(kSharpKept), small_(kSmallKept) {
  setWindowTitle(QString::fromStdString(deck.title));
  setAttribute(Qt::WA_OpaquePaintEvent);
  setCursor(Qt::BlankCursor);
  connect(&worker, &PdfWorker::drawn, this, &ShowWindow::keep);
}

void ShowWindow::showOn(QScreen* screen) {
  setScreen(screen);
  setGeometry(screen->geometry());  // by which X11 chooses the screen
  showFullScreen();
  if (windowHandle()) windowHandle()->setScreen(screen);  // by which Wayland does
}

void ShowWindow::go(const Position& to) {
  wanted_ = to;
  wish();
  update();
}

// What comes for another size of the window is too late.
void ShowWindow::keep(const Wish& wish, QSize room, const QImage& image, qint64 milliseconds) {
  if (wish.isSharp && room != this->room()) return;
  (wish.isSharp ? sharp_ : small_).insert(wish.page, new QImage(image));
  if (wish.page == wanted_.page) update();
  if (wish.isSharp || !isHardToDraw(milliseconds) || hard_.contains(wish.page)) return;
  hard_.insert(wish.page);
  this->wish();  // without it
}

void ShowWindow::wish() {
  const auto isThere = [this](const Wish& one) {
    return one.isSharp ? sharp_.contains(one.page) : small_.contains(one.page);
  };
  const auto isHard = [this](int page) { return hard_.contains(page); };
  worker_.wish(wanted_.page, wishesFor(wanted_.page, deck_.count(), isThere, isHard), room());
}

QSize ShowWindow::room() const {
  return size() * devicePixelRatioF();
}

const QImage* ShowWindow::image(int page) const {
  const QImage* sharp = sharp_.object(page);
  return sharp ? sharp : small_.object(page);
}

void ShowWindow::resizeEvent(QResizeEvent* /*event*/) {
  sharp_.clear();
  wish();
}

// A page of which there is nothing yet leaves the one before on the screen.
void ShowWindow::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const bool isDark = wanted_.isBlack || wanted_.atEnd;
  const bool isReady = isDark || image(wanted_.page);
  const QImage* page = isDark ? nullptr : image(wanted_.page);
  if (!isReady && painted_ && !painted_->isBlack && !painted_->atEnd) page = image(painted_->page);
  painter.fillRect(rect(), Qt::black);
  if (page) paintPage(painter, *page);
  if (wanted_.atEnd) paintEnd(painter);
  if (!isReady || painted_ == wanted_) return;
  painted_ = wanted_;
  // Once what was painted has left for the screen.
  QMetaObject::invokeMethod(this, &ShowWindow::positionPainted, Qt::QueuedConnection);
}

void ShowWindow::paintPage(QPainter& painter, const QImage& image) {
  QSizeF area = QSizeF(image.size()).scaled(room(), Qt::KeepAspectRatio) / devicePixelRatioF();
  // A sharp one fits to the pixel.
  if (image.width() == room().width() || image.height() == room().height())
    area = QSizeF(image.size()) / devicePixelRatioF();
  const QPointF corner((width() - area.width()) / 2, (height() - area.height()) / 2);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(QRectF(corner, area), image);
}

void ShowWindow::paintEnd(QPainter& painter) {
  QFont font = painter.font();
  font.setPixelSize(std::max(height() / 40, 1));
  painter.setFont(font);
  painter.setPen(Qt::gray);
  painter.drawText(rect().adjusted(0, 0, 0, -height() / 20), Qt::AlignHCenter | Qt::AlignBottom,
                   tr("End of the slides. Escape closes them."));
}

void ShowWindow::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Q:
      close();
      break;
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_PageDown:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      go(next(wanted_, deck_.count()));
      break;
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_PageUp:
    case Qt::Key_Backspace:
      go(previous(wanted_));
      break;
    case Qt::Key_Home:
      go({});
      break;
    case Qt::Key_End:
      go(Position{deck_.count()});
      break;
    case Qt::Key_B:
    case Qt::Key_Period:
      go(blanked(wanted_, !wanted_.isBlack));
      break;
    default:
      QWidget::keyPressEvent(event);
  }
}

void ShowWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) go(next(wanted_, deck_.count()));
  if (event->button() == Qt::RightButton) go(previous(wanted_));
}

void ShowWindow::closeEvent(QCloseEvent* /*event*/) {
  Q_EMIT closed();
}

}  // namespace torvane::show
