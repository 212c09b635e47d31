#include "platform/linux/stand_in_window.h"

#include <gtest/gtest.h>

#include <QAction>

#include "platform/linux/qt_text.h"
#include "support/naughty_names.h"
#include "support/qt_event_loop.h"

namespace torvane {
namespace {

class OneCommand final : public MenuDelegate {
 public:
  int chosen = 0;
  std::vector<MenuItem> menuNeedsUpdate() override {
    return {{"Connected:", {}}, {"R&D_iPad", {}, 1}, {"Quit", [this] { ++chosen; }}};
  }
};

class StandInWindowTest : public testing::Test {
 protected:
  StandInWindowTest() {
    window.setMenu(delegate);
    window.setIcon({.symbolName = "dot.radiowaves.right",
                    .accessibilityDescription = "Torvane P2P Helper",
                    .toolTip = "Torvane P2P Helper: <b>waiting</b>"});
  }

  OneCommand delegate;
  StandInWindow window;
};

TEST_F(StandInWindowTest, IsHiddenUntilItIsNeeded) {
  EXPECT_FALSE(window.isVisible());
  window.showBehind();
  EXPECT_TRUE(window.isVisible());
  EXPECT_TRUE(window.testAttribute(Qt::WA_ShowWithoutActivating));
  window.close();
  EXPECT_FALSE(window.isVisible());
}

TEST_F(StandInWindowTest, ComesToTheFrontWhenItIsAskedFor) {
  window.showBehind();
  window.showInFront();
  EXPECT_FALSE(window.testAttribute(Qt::WA_ShowWithoutActivating));
  EXPECT_TRUE(runEventsUntil([&] { return window.isActiveWindow(); }));
  EXPECT_TRUE(window.button().hasFocus());
}

TEST_F(StandInWindowTest, ShowsIconAndTooltipAsTheyAre) {
  EXPECT_EQ(window.state().textFormat(), Qt::PlainText);
  EXPECT_EQ(window.state().text(), "<b>waiting</b>");
  EXPECT_FALSE(window.picture().pixmap().isNull());
}

TEST_F(StandInWindowTest, SaysTheProgramsNameOnce) {
  window.setIcon({"dot.radiowaves.right", "Torvane P2P Helper",
                  "Torvane P2P Helper: waiting for the iPad app"});
  EXPECT_EQ(window.state().text(), "Waiting for the iPad app");
  EXPECT_TRUE(window.windowTitle().startsWith("Torvane P2P Helper"));
  EXPECT_EQ(window.picture().accessibleName(), "");
  EXPECT_FALSE(window.button().text().contains("Torvane"));
}

TEST_F(StandInWindowTest, NaughtyNamesAreShownAsTheyAreAndTheLayoutHolds) {
  const auto names = naughtyNames();
  if (names.empty()) GTEST_SKIP() << "no list of naughty names below TORVANE_VECTORS_DIR";
  window.showBehind();
  for (const auto& name : names) {
    window.setIcon({"dot.radiowaves.right", "Torvane P2P Helper", name});
    EXPECT_EQ(window.state().text(), qtText(name));
    EXPECT_EQ(window.state().textFormat(), Qt::PlainText);
    EXPECT_LT(window.sizeHint().width(), 500) << name;
  }
}

TEST_F(StandInWindowTest, GrowsWithALongText) {
  window.showBehind();
  const int before = window.height();
  std::string names;
  for (int i = 0; i < 40; ++i) names += "iPad number " + std::to_string(i) + ", ";
  window.setIcon({"dot.radiowaves.right", "Torvane P2P Helper", names});
  EXPECT_TRUE(runEventsUntil([&] { return window.height() > before; }));
  EXPECT_LT(window.width(), 500);
}

TEST_F(StandInWindowTest, ItsButtonOpensTheMenu) {
  window.showBehind();
  ASSERT_EQ(window.button().menu(), &window.menu().menu());
  EXPECT_TRUE(window.button().menu()->isEmpty());
  window.button().menu()->aboutToShow();
  const auto actions = window.button().menu()->actions();
  ASSERT_EQ(actions.size(), 3);
  EXPECT_EQ(actions[1]->text(), "    R&&D_iPad");
  actions[2]->trigger();
  EXPECT_TRUE(runEventsUntil([&] { return delegate.chosen == 1; }));
}

}  // namespace
}  // namespace torvane
