#include "fakes/helper_test.h"

namespace torvane {
namespace {

class StatusMenu : public HelperTest {};

TEST_F(StatusMenu, EndsWithQuit) {
  launch();
  const auto items = platform.statusBar.shown.menu->menuNeedsUpdate();
  ASSERT_FALSE(items.empty());
  EXPECT_EQ(items.back().title, "Quit");
  platform.log.clear();
  items.back().action();
  EXPECT_EQ(platform.log, CallLog{"terminate"});
}

}  // namespace
}  // namespace torvane
