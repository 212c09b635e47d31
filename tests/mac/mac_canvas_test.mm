// Where on the screen the drawing comes out. Its y grows downwards; that of the frameworks upwards.

#include "platform/mac/mac_canvas.h"

#include "mac/on_a_mac.h"
#include "platform/mac/mac_picture_decoder.h"

namespace torvane {
namespace {

using fake::markAt;

class MacCanvasOnScreen : public OnAMac {
 protected:
  // The canvas of a part of the view, as a view makes it.
  MacCanvas canvas_{{100, 200, 40, 30}, fake::kScale};
};

TEST_F(MacCanvasOnScreen, DrawsLinesWhereTheyAre) {
  canvas_.strokeLines({{{102, 203}, {130, 220}}, {0}}, 4);
  EXPECT_EQ(markAt(102, 203), 0U);  // not before it is shown
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(102, 203), 1U);
  EXPECT_EQ(markAt(130, 220), 1U);
  EXPECT_EQ(markAt(102, 226), 0U);  // the same seen from below
  EXPECT_EQ(markAt(110, 203), 0U);
}

TEST_F(MacCanvasOnScreen, DrawsOvalsWhereTheyAre) {
  canvas_.fillOval({104, 201, 6, 4}, 0.5);
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(104.5, 201.5), 2U);
  EXPECT_EQ(markAt(109.5, 204.5), 2U);
  EXPECT_EQ(markAt(110.5, 204.5), 0U);
  EXPECT_EQ(markAt(104.5, 205.5), 0U);
  EXPECT_EQ(markAt(104.5, 200.5), 0U);
}

TEST_F(MacCanvasOnScreen, DrawsPicturesUpright) {
  const auto picture = decodedPicture(toBytes("public.png 2 2"), PixelSize{1920, 1080});
  ASSERT_TRUE(picture);
  canvas_.drawPicture(*picture, {110, 210, 20, 10});
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(112, 212), 11U);
  EXPECT_EQ(markAt(128, 212), 12U);
  EXPECT_EQ(markAt(112, 218), 21U);
  EXPECT_EQ(markAt(128, 218), 22U);
  EXPECT_EQ(markAt(109, 212), 0U);
  EXPECT_EQ(markAt(112, 221), 0U);
}

TEST_F(MacCanvasOnScreen, CutsOffWhatLiesOutside) {
  canvas_.fillOval({0, 0, 1000, 1000}, 1);
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(100, 200), 2U);
  EXPECT_EQ(markAt(139.5, 229.5), 2U);
  EXPECT_EQ(markAt(99.5, 200), 0U);
  EXPECT_EQ(markAt(140, 229.5), 0U);
  EXPECT_EQ(markAt(120, 230), 0U);
}

TEST_F(MacCanvasOnScreen, CopiesAPartOfALayerToItsPlace) {
  const auto layer = canvas_.makeLayer({90, 190, 30, 30});
  layer->fillOval({90, 190, 30, 30}, 1);
  canvas_.copyLayer(*layer, {0, 205, 110, 4});
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(100, 205), 2U);
  EXPECT_EQ(markAt(109.5, 208.5), 2U);
  EXPECT_EQ(markAt(110, 205), 0U);
  EXPECT_EQ(markAt(100, 204.5), 0U);
  EXPECT_EQ(markAt(100, 209), 0U);
}

TEST_F(MacCanvasOnScreen, ErasesWithAnEmptyLayer) {
  canvas_.fillOval({100, 200, 40, 30}, 1);
  canvas_.copyLayer(*canvas_.makeLayer({100, 200, 10, 10}), {100, 200, 10, 10});
  canvas_.copyTo(fake::screen());
  EXPECT_EQ(markAt(105, 205), 0U);
  EXPECT_EQ(markAt(111, 205), 2U);
}

TEST_F(MacCanvasOnScreen, DrawsNothingWithoutAnArea) {
  for (const Rect& area : {Rect{0, 0, 0, 0}, Rect{10, 10, -5, 5}, Rect{0, 0, 5, 0}}) {
    MacCanvas empty(area, fake::kScale);
    empty.fillOval({0, 0, 100, 100}, 1);
    empty.strokeLines({{{1, 1}, {2, 2}}, {0}}, 4);
    empty.copyLayer(canvas_, {0, 0, 500, 500});
    empty.copyTo(fake::screen());
    canvas_.copyLayer(empty, {0, 0, 500, 500});
  }
  EXPECT_EQ(markAt(1, 1), 0U);
  EXPECT_EQ(timesSaid("to the screen"), 0U);
}

}  // namespace
}  // namespace torvane
