#include "ink/slide_show_screen.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

constexpr Rect kPrimary = {0, 0, 1920, 1080};
constexpr Rect kRight = {1920, 0, 1280, 720};

// A window as the window server gives it: y counts downwards from the primary display's top.
WindowInfo window(double x, double y, double width, double height,
                  std::string owner = "Microsoft PowerPoint") {
  return {std::move(owner),
          std::map<std::string, double>{{"X", x}, {"Y", y}, {"Width", width}, {"Height", height}}};
}

using Windows = std::vector<WindowInfo>;

TEST(SlideShowScreen, IsNoneWithoutWindowsOrScreens) {
  EXPECT_FALSE(screenOfSlideShow({}, {kPrimary}));
  EXPECT_FALSE(screenOfSlideShow({window(0, 0, 0, 0)}, {}));
}

TEST(SlideShowScreen, WindowAtTheTopLeftFillsThePrimaryScreen) {
  EXPECT_EQ(screenOfSlideShow({window(0, 0, 1920, 1080)}, {kPrimary}), kPrimary);
}

TEST(SlideShowScreen, MatchesWithinLessThanFourPoints) {
  EXPECT_EQ(screenOfSlideShow({window(0, 0, 1918, 1080)}, {kPrimary}), kPrimary);
  EXPECT_FALSE(screenOfSlideShow({window(0, 0, 1916, 1080)}, {kPrimary}));
  EXPECT_EQ(screenOfSlideShow({window(-3.9, 0, 1920, 1080)}, {kPrimary}), kPrimary);
  EXPECT_FALSE(screenOfSlideShow({window(4, 0, 1920, 1080)}, {kPrimary}));
  EXPECT_EQ(screenOfSlideShow({window(0, 3.9, 1920, 1080)}, {kPrimary}), kPrimary);
  EXPECT_FALSE(screenOfSlideShow({window(0, -4, 1920, 1080)}, {kPrimary}));
}

// Both edges count: a shorter window at the top leaves its lower edge too high.
TEST(SlideShowScreen, HeightMattersForTheLowerEdgeToo) {
  EXPECT_EQ(screenOfSlideShow({window(0, 0, 1920, 1077)}, {kPrimary}), kPrimary);
  EXPECT_FALSE(screenOfSlideShow({window(0, 0, 1920, 1076)}, {kPrimary}));
  EXPECT_FALSE(screenOfSlideShow({window(0, -2, 1920, 1077)}, {kPrimary}));
}

TEST(SlideShowScreen, IgnoresEveryOtherOwner) {
  EXPECT_FALSE(
      screenOfSlideShow({window(0, 0, 1920, 1080, "Microsoft PowerPoint "),
                         window(0, 0, 1920, 1080, "microsoft powerpoint"),
                         window(0, 0, 1920, 1080, "Keynote"), window(0, 0, 1920, 1080, "")},
                        {kPrimary}));
  auto nameless = window(0, 0, 1920, 1080);
  nameless.ownerName.reset();
  EXPECT_FALSE(screenOfSlideShow({nameless}, {kPrimary}));
}

TEST(SlideShowScreen, IgnoresAWindowWithoutBounds) {
  EXPECT_FALSE(screenOfSlideShow({WindowInfo{"Microsoft PowerPoint", std::nullopt}}, {kPrimary}));
}

TEST(SlideShowScreen, MissingBoundCountsAsZero) {
  WindowInfo sizeOnly{"Microsoft PowerPoint",
                      std::map<std::string, double>{{"Width", 1920}, {"Height", 1080}}};
  EXPECT_EQ(screenOfSlideShow({sizeOnly}, {kPrimary}), kPrimary);
  sizeOnly.bounds->erase("Width");
  EXPECT_FALSE(screenOfSlideShow({sizeOnly}, {kPrimary}));
}

TEST(SlideShowScreen, FindsLowerScreensFromTheTopDown) {
  // The right one's top is 360 below the primary's top.
  EXPECT_EQ(screenOfSlideShow({window(1920, 360, 1280, 720)}, {kPrimary, kRight}), kRight);
  EXPECT_FALSE(screenOfSlideShow({window(1920, 0, 1280, 720)}, {kPrimary, kRight}));
}

TEST(SlideShowScreen, FindsScreensLeftOfAndAboveThePrimary) {
  const Rect left = {-1280, 0, 1280, 1080};
  const Rect above = {0, 1080, 1920, 1200};
  EXPECT_EQ(screenOfSlideShow({window(-1280, 0, 1280, 1080)}, {kPrimary, left, above}), left);
  EXPECT_EQ(screenOfSlideShow({window(0, -1200, 1920, 1200)}, {kPrimary, left, above}), above);
}

TEST(SlideShowScreen, SecondaryIsPreferredOfTwoScreensWithThePrimaryInFront) {
  const Windows both = {window(0, 0, 1920, 1080), window(1920, 360, 1280, 720)};
  EXPECT_EQ(screenOfSlideShow(both, {kPrimary, kRight}), kRight);
}

TEST(SlideShowScreen, FrontmostCountsAmongSecondaryScreens) {
  const Rect left = {-1280, 0, 1280, 720};
  const Windows all = {window(0, 0, 1920, 1080), window(-1280, 360, 1280, 720),
                       window(1920, 360, 1280, 720)};
  EXPECT_EQ(screenOfSlideShow(all, {kPrimary, kRight, left}), left);
}

TEST(SlideShowScreen, PrimaryIsTakenWhenItIsFilledTwice) {
  const Windows twice = {window(0, 0, 1920, 1080), window(1, 1, 1920, 1080)};
  EXPECT_EQ(screenOfSlideShow(twice, {kPrimary, kRight}), kPrimary);
}

TEST(SlideShowScreen, MirroredScreensAreBothFilledByOneWindow) {
  const Rect nearly = {1, 0, 1920, 1080};
  EXPECT_EQ(screenOfSlideShow({window(0, 0, 1920, 1080)}, {kPrimary, nearly}), nearly);
  EXPECT_EQ(screenOfSlideShow({window(0, 0, 1920, 1080)}, {kPrimary, kPrimary}), kPrimary);
}

TEST(SlideShowScreen, OtherWindowsOfTheProgramDoNotCount) {
  const Windows windows = {window(100, 100, 800, 600), window(1920, 360, 1280, 720)};
  EXPECT_EQ(screenOfSlideShow(windows, {kPrimary, kRight}), kRight);
}

}  // namespace
}  // namespace torvane
