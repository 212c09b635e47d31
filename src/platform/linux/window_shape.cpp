#include "platform/linux/window_shape.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <QGuiApplication>
#include <algorithm>

namespace torvane {
namespace {

constexpr int kRowsAtOnce = 128;  // far less than a request may hold, on any screen

xcb_window_t idOf(const QWindow& window) {
  return static_cast<xcb_window_t>(window.winId());
}

QImage inServersOrder(xcb_connection_t* x11, const QImage& bits) {
  const bool isLeastFirst =
      xcb_get_setup(x11)->bitmap_format_bit_order == XCB_IMAGE_ORDER_LSB_FIRST;
  return bits.convertToFormat(isLeastFirst ? QImage::Format_MonoLSB : QImage::Format_Mono);
}

// A bitmap on the X server for the time of one change.
class Bitmap {
 public:
  Bitmap(xcb_connection_t* x11, xcb_window_t window, const QImage& bits)
      : x11_(x11), id_(xcb_generate_id(x11)) {
    xcb_create_pixmap(x11, 1, id_, window, static_cast<std::uint16_t>(bits.width()),
                      static_cast<std::uint16_t>(bits.height()));
    const xcb_gcontext_t context = xcb_generate_id(x11);
    xcb_create_gc(x11, context, id_, 0, nullptr);
    const QImage sent = inServersOrder(x11, bits);
    for (int top = 0; top < sent.height(); top += kRowsAtOnce) putRows(context, sent, top);
    xcb_free_gc(x11, context);
  }
  ~Bitmap() { xcb_free_pixmap(x11_, id_); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;

  [[nodiscard]] xcb_pixmap_t id() const { return id_; }

 private:
  void putRows(xcb_gcontext_t context, const QImage& bits, int top) {
    const int rows = std::min(kRowsAtOnce, bits.height() - top);
    xcb_put_image(x11_, XCB_IMAGE_FORMAT_XY_PIXMAP, id_, context,
                  static_cast<std::uint16_t>(bits.width()), static_cast<std::uint16_t>(rows), 0,
                  static_cast<std::int16_t>(top), 0, 1,
                  static_cast<std::uint32_t>(rows * bits.bytesPerLine()), bits.constScanLine(top));
  }

  xcb_connection_t* x11_;
  xcb_pixmap_t id_;
};

class X11WindowShape final : public WindowShape {
 public:
  void makeWhole(QWindow& window) override {
    if (auto* x11 = qtConnection()) combine(x11, XCB_SHAPE_SO_SET, window, {}, XCB_PIXMAP_NONE);
  }

  void set(QWindow& window, const QImage& bits) override {
    combine(XCB_SHAPE_SO_SET, window, {}, bits);
  }

  void add(QWindow& window, const QPoint& at, const QImage& bits) override {
    combine(XCB_SHAPE_SO_UNION, window, at, bits);
  }

 private:
  // Qt's own, so that shapes and what is painted keep their order.
  static xcb_connection_t* qtConnection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
  }

  static void combine(xcb_shape_op_t how, const QWindow& window, const QPoint& at,
                      const QImage& bits) {
    auto* x11 = qtConnection();
    if (x11 != nullptr) combine(x11, how, window, at, Bitmap(x11, idOf(window), bits).id());
  }

  static void combine(xcb_connection_t* x11, xcb_shape_op_t how, const QWindow& window,
                      const QPoint& at, xcb_pixmap_t bitmap) {
    xcb_shape_mask(x11, how, XCB_SHAPE_SK_BOUNDING, idOf(window), static_cast<std::int16_t>(at.x()),
                   static_cast<std::int16_t>(at.y()), bitmap);
  }
};

}  // namespace

std::unique_ptr<WindowShape> makeX11WindowShape() {
  return std::make_unique<X11WindowShape>();
}

}  // namespace torvane
