// The overlay's window, on screens without a display.

#include "platform/linux/overlay_widget.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QWindow>

#include "platform/linux/qt_overlay_surface.h"
#include "support/qt_event_loop.h"

namespace torvane {
namespace {

constexpr QPoint kOnLine(640, 400);

class StillClock final : public Clock {
 public:
  [[nodiscard]] double unixTime() const override { return 0; }
  [[nodiscard]] double mediaTime() const override { return now; }
  double now = 0;
};

class OverlaySurfaceTest : public testing::Test {
 protected:
  void SetUp() override {
    surface_ = surfaces_.makeOverlaySurface({0, 0, 1280, 800}, view_);
    ASSERT_TRUE(surface_);
    window_ = dynamic_cast<OverlayWidget*>(QApplication::topLevelWidgets().value(0));
    ASSERT_TRUE(window_);
  }

  void drawLine() {
    view_.begin(1, {0.2, 0.5});
    view_.append(1, {0.8, 0.5});
    view_.setNeedsDisplay();
  }

  // What the window shows, in pixels.
  QImage shown() {
    QApplication::processEvents();
    return window_->grab().toImage();
  }

  StillClock clock_;
  OverlayView view_;
  QtOverlaySurfaces surfaces_{clock_, nullptr};
  std::unique_ptr<OverlaySurface> surface_;
  OverlayWidget* window_ = nullptr;
};

TEST_F(OverlaySurfaceTest, IsHiddenUntilItIsOrderedFront) {
  EXPECT_FALSE(surface_->isVisible());
  surface_->orderFrontRegardless();
  surface_->orderFrontRegardless();
  EXPECT_TRUE(surface_->isVisible());
  surface_->orderOut();
  surface_->orderOut();
  EXPECT_FALSE(surface_->isVisible());
}

TEST_F(OverlaySurfaceTest, NeverTakesFocusOrClicks) {
  EXPECT_TRUE(window_->windowFlags().testFlag(Qt::WindowTransparentForInput));
  EXPECT_TRUE(window_->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
  EXPECT_TRUE(window_->testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(OverlaySurfaceTest, TakesFramesFromTheBottomLeft) {
  const Rect left{-800, 400, 800, 600};
  surface_->setFrame(left);
  EXPECT_EQ(surface_->frame(), left);
  EXPECT_EQ(window_->geometry(), QRect(-800, -200, 800, 600));
}

TEST_F(OverlaySurfaceTest, LaysTheSlideOverTheWholeFrame) {
  surface_->orderFrontRegardless();
  QApplication::processEvents();
  EXPECT_EQ(view_.slideRect(), (Rect{0, 40, 1280, 720}));
}

TEST_F(OverlaySurfaceTest, ShowsInkWhenItIsDrawn) {
  surface_->orderFrontRegardless();
  drawLine();
  const QImage image = shown();
  EXPECT_EQ(image.pixelColor(640, 400), QColor(255, 59, 48));
  EXPECT_EQ(qAlpha(image.pixel(640, 300)), 0);
}

TEST_F(OverlaySurfaceTest, ShowsInkThatWasDrawnWhileItWasHidden) {
  drawLine();
  surface_->orderFrontRegardless();
  EXPECT_EQ(shown().pixelColor(640, 400), QColor(255, 59, 48));
  surface_->orderOut();
  surface_->orderFrontRegardless();
  EXPECT_EQ(shown().pixelColor(640, 400), QColor(255, 59, 48));
}

TEST_F(OverlaySurfaceTest, FollowsAFrameThatMoves) {
  surface_->orderFrontRegardless();
  drawLine();
  surface_->setFrame({-800, 400, 800, 600});
  EXPECT_EQ(shown().pixelColor(400, 300), QColor(255, 59, 48));
}

// As an alert of the program's own.
TEST_F(OverlaySurfaceTest, LeavesOutTheWindowThatHasTheKeyboard) {
  surface_->orderFrontRegardless();
  drawLine();
  ASSERT_EQ(shown().pixelColor(kOnLine), QColor(255, 59, 48));
  QWidget alert;
  alert.setGeometry(600, 380, 100, 40);
  alert.show();
  alert.activateWindow();
  ASSERT_TRUE(runEventsUntil([&] { return alert.isActiveWindow(); }));
  EXPECT_EQ(qAlpha(shown().pixel(kOnLine)), 0);
  EXPECT_EQ(shown().pixelColor(kOnLine - QPoint(200, 0)), QColor(255, 59, 48));
  alert.move(600, 500);
  EXPECT_EQ(shown().pixelColor(kOnLine), QColor(255, 59, 48));
  alert.move(600, 380);
  EXPECT_EQ(qAlpha(shown().pixel(kOnLine)), 0);
  alert.hide();
  EXPECT_EQ(shown().pixelColor(kOnLine), QColor(255, 59, 48));
}

TEST_F(OverlaySurfaceTest, DrawsInPixelsOnAFineScreen) {
  surface_->setFrame({1280, 32, 1024, 768});
  surface_->orderFrontRegardless();
  drawLine();
  ASSERT_TRUE(runEventsUntil([this] { return window_->devicePixelRatioF() == 2; }));
  const QImage image = shown();
  EXPECT_EQ(image.size(), QSize(2048, 1536));
  EXPECT_EQ(image.pixelColor(1024, 768), QColor(255, 59, 48));
  int height = 0;
  for (int y = 0; y < image.height(); ++y) height += qAlpha(image.pixel(1024, y)) > 0 ? 1 : 0;
  EXPECT_NEAR(height, 2 * 1024 * 0.005, 2);
}

TEST_F(OverlaySurfaceTest, PaintsNothingWhileNothingChanges) {
  surface_->orderFrontRegardless();
  drawLine();
  QApplication::processEvents();
  struct Count : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
      paintings += event->type() == QEvent::Paint ? 1 : 0;
      return false;
    }
    int paintings = 0;
  } count;
  window_->installEventFilter(&count);
  view_.setNeedsDisplay();
  view_.append(99, {0.5, 0.5});
  view_.setNeedsDisplay();
  QApplication::processEvents();
  EXPECT_EQ(count.paintings, 0);
  drawLine();
  ASSERT_TRUE(runEventsUntil([&] { return count.paintings > 0; }));
}

TEST_F(OverlaySurfaceTest, FinishesALongRebuildByItself) {
  surface_->orderFrontRegardless();
  for (int id = 0; id < 4000; ++id) {
    view_.begin(id, {0.2, 0.5});
    for (int i = 1; i < 100; ++i) view_.append(id, {0.2 + 0.003 * i, 0.5 + 0.00005 * id});
  }
  view_.setNeedsDisplay();
  EXPECT_FALSE(view_.isSettled());
  ASSERT_TRUE(runEventsUntil([this] { return view_.isSettled(); }));
  EXPECT_EQ(shown().pixelColor(400, 450), QColor(255, 59, 48));
}

// A window's shape as the X server would keep it.
class KeptShape final : public WindowShape {
 public:
  explicit KeptShape(QImage& bits) : bits_(bits) {}

  void makeWhole(QWindow& window) override { begin(window, 1); }
  void set(QWindow& window, const QImage& bits) override {
    begin(window, 0);
    add(window, {}, bits);
  }
  void add(QWindow&, const QPoint& at, const QImage& bits) override {
    for (int y = 0; y < bits.height(); ++y) {
      for (int x = 0; x < bits.width(); ++x) {
        const QPoint place = at + QPoint(x, y);
        if (bits_.valid(place) && bits.pixelIndex(x, y) == 1) bits_.setPixel(place, 1);
      }
    }
  }

 private:
  void begin(const QWindow& window, uint value) {
    bits_ = QImage(window.size() * window.devicePixelRatio(), QImage::Format_MonoLSB);
    bits_.fill(value);
  }
  QImage& bits_;
};

class ShapedOverlayTest : public testing::Test {
 protected:
  void SetUp() override {
    window_.setGeometry(0, 0, 1280, 800);
    window_.show();
    window_.setTranslucent(false);
  }

  void drawLine() {
    view_.begin(1, {0.2, 0.5});
    view_.append(1, {0.8, 0.5});
    view_.setNeedsDisplay();
  }
  int pixels() {
    int count = 0;
    for (int y = 0; y < bits_.height(); ++y) {
      for (int x = 0; x < bits_.width(); ++x) count += bits_.pixelIndex(x, y);
    }
    return count;
  }
  bool isIn(const QPoint& point) { return bits_.valid(point) && bits_.pixelIndex(point) == 1; }

  StillClock clock_;
  OverlayView view_;
  QImage bits_;
  OverlayWidget window_{view_, clock_, std::make_unique<KeptShape>(bits_)};
};

TEST_F(ShapedOverlayTest, IsCutToTheInkWhereWindowsCannotBeTranslucent) {
  QApplication::processEvents();
  EXPECT_EQ(pixels(), 0);
  drawLine();
  ASSERT_TRUE(runEventsUntil([this] { return isIn(kOnLine); }));
  EXPECT_TRUE(isIn({640, 397}));
  EXPECT_FALSE(isIn({640, 300}));
  EXPECT_NEAR(pixels(), 6.4 * 768 + 3.2 * 3.2 * 3.14, 768);  // the line and its round ends
}

TEST_F(ShapedOverlayTest, KeepsToTheInkAsItGoesAndComes) {
  for (int times = 0; times < 2; ++times) {
    drawLine();
    ASSERT_TRUE(runEventsUntil([this] { return isIn(kOnLine); }));
    view_.remove({1});
    view_.setNeedsDisplay();
    ASSERT_TRUE(runEventsUntil([this] { return !isIn(kOnLine); }));
    EXPECT_EQ(pixels(), 0);
  }
}

TEST_F(ShapedOverlayTest, IsWholeAgainWithACompositor) {
  QApplication::processEvents();
  EXPECT_EQ(pixels(), 0);
  window_.setTranslucent(true);
  EXPECT_EQ(pixels(), 1280 * 800);
}

TEST_F(ShapedOverlayTest, IsNotCutToInkUnderTheWindowThatHasTheKeyboard) {
  drawLine();
  ASSERT_TRUE(runEventsUntil([this] { return isIn(kOnLine); }));
  window_.setHole({600, 380, 100, 40});
  ASSERT_TRUE(runEventsUntil([this] { return !isIn(kOnLine); }));
  EXPECT_TRUE(isIn(kOnLine - QPoint(200, 0)));
  window_.setHole({});
  ASSERT_TRUE(runEventsUntil([this] { return isIn(kOnLine); }));
}

TEST_F(ShapedOverlayTest, FollowsAWindowOfAnotherSize) {
  drawLine();
  ASSERT_TRUE(runEventsUntil([this] { return isIn(kOnLine); }));
  window_.resize(640, 400);
  ASSERT_TRUE(runEventsUntil([this] { return isIn({320, 200}); }));
  EXPECT_FALSE(isIn(kOnLine));
}

}  // namespace
}  // namespace torvane
