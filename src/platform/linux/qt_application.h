#pragma once

#include "ports/application.h"

namespace torvane {

class QtApplication final : public Application {
 public:
  void activateIgnoringOtherApps() override { isAskedToFront_ = true; }
  void terminate() override;

  // Whether the window that is about to open may take the keyboard: when the program was asked to
  // the front since the last one, or has the keyboard already. The desktops here have no programs
  // in front, only windows.
  [[nodiscard]] bool takeActivation();

 private:
  bool isAskedToFront_ = false;
};

}  // namespace torvane
