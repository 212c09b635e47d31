#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "fakes/simulated_platform.h"
#include "ports/main_hop.h"
#include "ports/user_dialogs.h"

namespace torvane {

// A fixture for one part of the program by itself on a simulated desktop.
class PartTest : public testing::Test, protected UserDialogs {
 protected:
  SimulatedPlatform platform;
  const std::shared_ptr<const int> lifetime = std::make_shared<const int>(0);
  const MainHop main{platform.ports.mainQueue, lifetime};

  int runAlert(AlertContent content) override { return platform.ports.alerts.runModal(content); }
  void alert(const std::string& text) override {
    runAlert({.message = "Torvane P2P Helper", .informativeText = text});
  }
};

}  // namespace torvane
