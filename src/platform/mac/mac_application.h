#pragma once

#include "ports/application.h"
#include "ports/main_queue.h"

namespace torvane {

class MacApplication final : public Application {
 public:
  explicit MacApplication(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void activateIgnoringOtherApps() override;
  void terminate() override;

 private:
  MainQueue& mainQueue_;
};

}  // namespace torvane
