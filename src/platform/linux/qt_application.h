#pragma once

#include "app/application.h"

namespace torvane {

class QtApplication final : public Application {
 public:
  void activateIgnoringOtherApps() override;
  void terminate() override;
};

}  // namespace torvane
