#pragma once

#include "platform/linux/qt_application.h"
#include "ports/alert.h"

namespace torvane {

class QtAlerts final : public Alerts {
 public:
  explicit QtAlerts(QtApplication& application) : application_(application) {}

  int runModal(const AlertContent& content) override;

 private:
  QtApplication& application_;
};

}  // namespace torvane
