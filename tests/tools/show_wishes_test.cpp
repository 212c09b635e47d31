#include "torvane_show/wishes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace torvane::show {
namespace {

bool nothing(const Wish&) {
  return false;
}

bool easy(int) {
  return false;
}

TEST(ShowWishes, ThePageComesFirstThenItsNeighboursSmallBeforeSharp) {
  const auto wishes = wishesFor(3, 9, nothing, easy);
  const std::vector<Wish> first(wishes.begin(), wishes.begin() + 6);
  EXPECT_EQ(first, (std::vector<Wish>{
                       {3, false}, {3, true}, {4, false}, {2, false}, {4, true}, {2, true}}));
}

TEST(ShowWishes, EachPageIsWantedOnceInEachSizeAndNoneBeyondTheDeck) {
  const auto wishes = wishesFor(1, 5, nothing, easy);
  EXPECT_EQ(
      std::count_if(wishes.begin(), wishes.end(), [](const Wish& one) { return one.isSharp; }), 2);
  for (int page = 1; page <= 5; ++page)
    EXPECT_EQ(std::count(wishes.begin(), wishes.end(), Wish{page, false}), 1) << page;
  EXPECT_EQ(wishes.size(), 7U);
}

TEST(ShowWishes, WhatIsThereIsNotWantedAgain) {
  const auto isThere = [](const Wish& wish) { return wish.isSharp || wish.page != 4; };
  EXPECT_EQ(wishesFor(3, 5, isThere, easy), (std::vector<Wish>{{4, false}}));
  EXPECT_TRUE(wishesFor(
                  3, 5, [](const Wish&) { return true; }, easy)
                  .empty());
}

TEST(ShowWishes, NoSmallPictureIsWantedOfAPageThatIsSharpAlready) {
  const auto wishes = wishesFor(
      1, 1, [](const Wish& wish) { return wish.isSharp; }, easy);
  EXPECT_TRUE(wishes.empty());
}

TEST(ShowWishes, PagesThatTakeLongAreDrawnSharpOnlyWhenTheyAreShown) {
  const auto isSecond = [](int page) { return page == 2; };
  EXPECT_EQ(wishesFor(1, 3, nothing, isSecond),
            (std::vector<Wish>{{1, false}, {1, true}, {2, false}, {3, false}}));
  EXPECT_EQ(wishesFor(2, 2, nothing, isSecond),
            (std::vector<Wish>{{2, false}, {2, true}, {1, false}, {1, true}}));
  EXPECT_TRUE(isHardToDraw(300));
  EXPECT_FALSE(isHardToDraw(299));
}

TEST(ShowWishes, LongDecksAreNotKeptWhole) {
  const auto wishes = wishesFor(500, 10'000, nothing, easy);
  EXPECT_EQ(wishes.size(), 1U + 3 + 2 * kSmallAround);
}

}  // namespace
}  // namespace torvane::show
