#include "fakes/helper_test.h"

namespace torvane {
namespace {

class PairingRegistry : public HelperTest {};

TEST_F(PairingRegistry, LoadsTheStoredDevices) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{"key", "Ann"}};
  construct();
  EXPECT_EQ(helper->pairedDevices, (std::map<std::string, std::string>{{"key", "Ann"}}));
}

TEST_F(PairingRegistry, OneValueThatIsNotTextMakesAnEmptyRegistry) {
  platform.defaults.stored["pairedDeviceKeys"] = JsonObject{{"key", "Ann"}, {"other", 7}};
  construct();
  EXPECT_TRUE(helper->pairedDevices.empty());
}

TEST_F(PairingRegistry, StoredValueThatIsNoDictionaryMakesAnEmptyRegistry) {
  platform.defaults.stored["pairedDeviceKeys"] = "Ann";
  construct();
  EXPECT_TRUE(helper->pairedDevices.empty());
}

TEST_F(PairingRegistry, PairingAgainKeepsOneEntryWithTheLatestName) {
  construct();
  helper->pair("key", "Old");
  helper->pair("key", "New");
  EXPECT_EQ(helper->pairedDevices, (std::map<std::string, std::string>{{"key", "New"}}));
  EXPECT_EQ(platform.defaults.stored["pairedDeviceKeys"], JsonValue(JsonObject{{"key", "New"}}));
}

TEST_F(PairingRegistry, PairedDevicesSurviveARestart) {
  construct();
  helper->pair(deviceKey(1), "Ann");
  construct();
  EXPECT_TRUE(helper->isPaired(deviceKey(1)));
  EXPECT_FALSE(helper->isPaired(deviceKey(2)));
}

}  // namespace
}  // namespace torvane
