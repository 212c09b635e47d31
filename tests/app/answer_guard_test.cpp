#include "app/answer_guard.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

// Somebody at the keyboard, on a clock of the test's own.
class AnswerGuardTest : public testing::Test {
 protected:
  double now = 100;
  bool isHeld = false;
  AnswerGuard guard;

  void open() {
    guard.didShow(now);
    guard.didGetKeyboard(now);
  }
  // Looks as often as an adapter does.
  void pass(double seconds) {
    for (const double end = now + seconds; now < end; now += AnswerGuard::kLookInterval) {
      guard.look(now, isHeld);
    }
  }
  bool takesKeys() { return guard.takesKeys(false); }
};

TEST_F(AnswerGuardTest, TakesNothingInTheFirstSecond) {
  open();
  pass(0.99);
  EXPECT_FALSE(takesKeys());
  EXPECT_FALSE(guard.takesClicks());
}

TEST_F(AnswerGuardTest, TakesKeysAndClicksAfterTheFirstSecond) {
  open();
  pass(1.05);
  EXPECT_TRUE(takesKeys());
  EXPECT_TRUE(guard.takesClicks());
}

TEST_F(AnswerGuardTest, TakesNothingWhileWhatWasHeldIsHeld) {
  open();
  isHeld = true;
  pass(30);
  EXPECT_FALSE(takesKeys());
  EXPECT_FALSE(guard.takesClicks());
  isHeld = false;
  pass(0.05);
  EXPECT_TRUE(takesKeys());
  EXPECT_TRUE(guard.takesClicks());
}

TEST_F(AnswerGuardTest, ReleaseWithinTheSecondDoesNotShortenIt) {
  isHeld = true;
  open();
  pass(0.5);
  isHeld = false;
  pass(0.45);
  EXPECT_FALSE(takesKeys());
  pass(0.1);
  EXPECT_TRUE(takesKeys());
}

TEST_F(AnswerGuardTest, WhatIsPressedLaterDoesNotCloseItAgain) {
  open();
  pass(1.05);
  isHeld = true;
  pass(1);
  EXPECT_TRUE(takesKeys());
  EXPECT_TRUE(guard.takesClicks());
}

// A key pressed and let go just before the second's end may arrive just after it.
TEST_F(AnswerGuardTest, OneQuietLookIsNotEnough) {
  open();
  now += 1.5;
  guard.look(now, false);
  EXPECT_FALSE(takesKeys());
  EXPECT_FALSE(guard.takesClicks());
  guard.look(now, true);
  guard.look(now, false);
  EXPECT_FALSE(takesKeys());
  guard.look(now, false);
  EXPECT_TRUE(takesKeys());
}

TEST_F(AnswerGuardTest, TakesNoKeyThatRepeatsItself) {
  open();
  pass(1.05);
  EXPECT_FALSE(guard.takesKeys(true));
  EXPECT_TRUE(takesKeys());
}

TEST_F(AnswerGuardTest, KeysWaitAnewWheneverTheKeyboardComesBackWhileClicksDoNot) {
  open();
  pass(1.05);
  guard.didGetKeyboard(now);
  EXPECT_FALSE(takesKeys());
  EXPECT_TRUE(guard.takesClicks());
  pass(0.9);
  EXPECT_FALSE(takesKeys());
  pass(0.15);
  EXPECT_TRUE(takesKeys());
}

TEST_F(AnswerGuardTest, ClicksCountWithoutTheKeyboard) {
  guard.didShow(now);
  pass(1.05);
  EXPECT_TRUE(guard.takesClicks());
  EXPECT_FALSE(takesKeys());
}

TEST_F(AnswerGuardTest, NeedsLooksOnlyWhileItWaits) {
  EXPECT_FALSE(guard.needsLooks());
  guard.didShow(now);
  EXPECT_TRUE(guard.needsLooks());
  pass(1.05);
  EXPECT_FALSE(guard.needsLooks());
  guard.didGetKeyboard(now);
  EXPECT_TRUE(guard.needsLooks());
  pass(1.05);
  EXPECT_FALSE(guard.needsLooks());
}

TEST_F(AnswerGuardTest, TakesNothingBeforeItIsSeen) {
  pass(5);
  EXPECT_FALSE(takesKeys());
  EXPECT_FALSE(guard.takesClicks());
  open();
  pass(1.05);
  EXPECT_TRUE(takesKeys());
}

}  // namespace
}  // namespace torvane
