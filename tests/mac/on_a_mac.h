// What every test of the Mac's program begins and ends with.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "mac/fakes/fake_system.h"
#include "mac/runtime/objc_runtime.h"

extern "C" void* objc_autoreleasePoolPush();
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace torvane {

// A Mac that is new for each test, with a pool for what is autoreleased. Nothing may be left of
// what the test made on it.
class OnAMac : public testing::Test {
 protected:
  OnAMac() { fake::reset(); }
  ~OnAMac() override {
    fake::drainQueues();
    fake::reset();
    objc_autoreleasePoolPop(pool_);
    EXPECT_LE(runtime::liveObjects(), std::max(before_, 2L))
        << "objects are left (two colours are for ever)";
  }

  static std::size_t timesSaid(const std::string& what) {
    const auto& log = fake::system().log;
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), what));
  }

 private:
  long before_ = runtime::liveObjects();
  void* pool_ = objc_autoreleasePoolPush();
};

}  // namespace torvane
