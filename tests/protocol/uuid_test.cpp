#include "protocol/uuid.h"

#include <gtest/gtest.h>

#include <set>

namespace torvane {
namespace {

TEST(RandomUUID, HasTheCanonicalUpperCaseForm) {
  for (int i = 0; i < 1000; ++i) {
    const std::string uuid = randomUUID();
    ASSERT_EQ(uuid.size(), 36U);
    for (std::size_t at = 0; at < uuid.size(); ++at) {
      const bool hyphen = at == 8 || at == 13 || at == 18 || at == 23;
      const std::string_view allowed = hyphen ? "-" : "0123456789ABCDEF";
      ASSERT_NE(allowed.find(uuid[at]), std::string_view::npos) << uuid;
    }
  }
}

TEST(RandomUUID, IsOfVersionFour) {
  for (int i = 0; i < 1000; ++i) {
    const std::string uuid = randomUUID();
    EXPECT_EQ(uuid[14], '4');
    EXPECT_NE(std::string_view("89AB").find(uuid[19]), std::string_view::npos) << uuid;
  }
}

TEST(RandomUUID, IsAnotherEachTime) {
  std::set<std::string> seen;
  for (int i = 0; i < 10000; ++i) EXPECT_TRUE(seen.insert(randomUUID()).second);
}

TEST(RandomUUID, TakesEveryDigitAtEveryFreePlace) {
  std::set<std::pair<std::size_t, char>> seen;
  for (int i = 0; i < 2000; ++i) {
    const std::string uuid = randomUUID();
    for (std::size_t at = 0; at < uuid.size(); ++at) seen.emplace(at, uuid[at]);
  }
  EXPECT_EQ(seen.size(), 4U + 1U + 4U + 30U * 16U);  // hyphens, version, variant, the rest
}

}  // namespace
}  // namespace torvane
