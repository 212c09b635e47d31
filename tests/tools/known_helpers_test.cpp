#include "torvane_ipad/known_helpers.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temporary_folder.h"
#include "torvane_ipad/helper_choice.h"

namespace torvane::ipad {
namespace {

const std::string kFirst(64, 'a');
const std::string kSecond(64, 'b');

TEST(KnownHelpers, SurvivesTheFile) {
  KnownHelpers known;
  known.remember({"mini:48484", "Mini \"one\"\n", kFirst});
  known.remember({"[::1]:7", "", kSecond});
  const auto read = KnownHelpers::parse(known.serialized());
  ASSERT_TRUE(read);
  ASSERT_NE(read->find("mini:48484"), nullptr);
  EXPECT_EQ(read->find("mini:48484")->fingerprint, kFirst);
  EXPECT_EQ(read->find("mini:48484")->name, "Mini \"one\"\n");
  EXPECT_EQ(read->latest()->address, "[::1]:7");
}

TEST(KnownHelpers, KnowsAComputerByItsFingerprintAtItsNewAddress) {
  KnownHelpers known;
  known.remember({"mini:1", "Mini", kFirst});
  known.remember({"other:1", "Other", kSecond});
  known.remember({"mini.lan:1", "Mini", kFirst});
  EXPECT_EQ(known.find("mini:1"), nullptr);
  ASSERT_NE(known.withFingerprint(kFirst), nullptr);
  EXPECT_EQ(known.withFingerprint(kFirst)->address, "mini.lan:1");
  EXPECT_EQ(known.latest()->address, "mini.lan:1");
  EXPECT_EQ(known.fingerprints(), (std::vector<std::string>{kFirst, kSecond}));
  EXPECT_EQ(known.withFingerprint(""), nullptr);
}

TEST(KnownHelpers, KeepsAComputerWhoseAddressAnotherHasNow) {
  KnownHelpers known;
  known.remember({"mini:1", "Old", kFirst});
  known.remember({"mini:1", "New", kSecond});
  EXPECT_EQ(known.find("mini:1")->fingerprint, kSecond);
  EXPECT_NE(known.withFingerprint(kFirst), nullptr);
  EXPECT_TRUE(known.forget("mini:1"));
  EXPECT_EQ(known.latest(), nullptr);
  EXPECT_FALSE(known.forget("mini:1"));
}

TEST(KnownHelpers, RefusesADamagedList) {
  EXPECT_FALSE(KnownHelpers::parse(""));
  EXPECT_FALSE(KnownHelpers::parse("{}"));
  EXPECT_FALSE(KnownHelpers::parse(R"({"helpers":[1]})"));
  EXPECT_FALSE(KnownHelpers::parse(R"({"helpers":[{"address":"a:1","fingerprint":"short"}]})"));
}

TEST(KnownHelpers, AbsentFileIsAnEmptyListAndADamagedOneIsNone) {
  const TemporaryFolder folder;
  const std::string file = folder / "known-helpers.json";
  const auto absent = loadKnownHelpers(file);
  ASSERT_TRUE(absent);
  EXPECT_EQ(absent->latest(), nullptr);
  std::ofstream(file) << "{\"helpers\":";
  EXPECT_FALSE(loadKnownHelpers(file));
}

TEST(Fingerprint, IsSixtyFourLowerCaseDigits) {
  EXPECT_TRUE(isFingerprint(kFirst));
  EXPECT_FALSE(isFingerprint(std::string(64, 'A')));
  EXPECT_FALSE(isFingerprint(std::string(63, 'a')));
  EXPECT_FALSE(isFingerprint(""));
}

TEST(HelperChoice, PrefersAKnownHelperToOthersOnTheNetwork) {
  KnownHelpers known;
  known.remember({"stage.local:48484", "Stage", kFirst});
  const std::vector<HelperAddress> found = {{"hall.local", 48484, "", "Hall", ""},
                                            {"stage.local", 48484, "", "Stage", ""}};
  ASSERT_NE(pickHelper(found, known), nullptr);
  EXPECT_EQ(pickHelper(found, known)->host, "stage.local");
  EXPECT_EQ(pickHelper(found, {}), nullptr) << "two strangers";
  const std::vector<HelperAddress> one(found.begin(), found.begin() + 1);
  ASSERT_NE(pickHelper(one, known), nullptr);
  EXPECT_EQ(pickHelper(one, known)->host, "hall.local");
  EXPECT_EQ(pickHelper({}, known), nullptr);
}

}  // namespace
}  // namespace torvane::ipad
