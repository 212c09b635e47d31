#include "torvane_show/position.h"

#include <gtest/gtest.h>

namespace torvane::show {
namespace {

TEST(ShowPosition, NextGoesOnToTheEndAndStaysThere) {
  Position now;
  EXPECT_EQ(now = next(now, 3), (Position{.page = 2}));
  EXPECT_EQ(now = next(now, 3), (Position{.page = 3}));
  EXPECT_EQ(now = next(now, 3), (Position{.page = 3, .atEnd = true}));
  EXPECT_EQ(next(now, 3), now);
}

TEST(ShowPosition, PreviousComesBackFromTheEndToTheLastPage) {
  EXPECT_EQ(previous({.page = 3, .atEnd = true}), (Position{.page = 3}));
  EXPECT_EQ(previous({.page = 3}), (Position{.page = 2}));
  EXPECT_EQ(previous({.page = 1}), (Position{.page = 1}));
}

TEST(ShowPosition, GoesToPagesThatThereAre) {
  EXPECT_EQ(goTo(1, 3), (Position{.page = 1}));
  EXPECT_EQ(goTo(3, 3), (Position{.page = 3}));
  for (const int page : {0, -1, 4, 2'000'000'000}) EXPECT_EQ(goTo(page, 3), std::nullopt) << page;
}

TEST(ShowPosition, DarkScreenKeepsThePageAndAMoveEndsIt) {
  const Position dark = blanked({.page = 2}, true);
  EXPECT_EQ(dark, (Position{.page = 2, .isBlack = true}));
  EXPECT_EQ(blanked(dark, false), (Position{.page = 2}));
  EXPECT_EQ(next(dark, 3), (Position{.page = 3}));
  EXPECT_EQ(previous(dark), (Position{.page = 1}));
}

TEST(ShowPosition, TheEndIsNotMadeDark) {
  const Position end{.page = 3, .atEnd = true};
  EXPECT_EQ(blanked(end, true), end);
}

TEST(ShowScreen, IsTheOneLookedAtOrElseTheOther) {
  EXPECT_EQ(screenForShow(1, 0), 0);
  EXPECT_EQ(screenForShow(2, 0), 1);
  EXPECT_EQ(screenForShow(2, 1), 0);
  EXPECT_EQ(screenForShow(3, 2), 0);
}

}  // namespace
}  // namespace torvane::show
