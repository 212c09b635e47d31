#pragma once

#include "app/alert.h"
#include "platform/linux/qt_application.h"

namespace torvane {

class QtAlerts final : public Alerts {
 public:
  explicit QtAlerts(QtApplication& application) : application_(application) {}

  int runModal(const AlertContent& content) override;

 private:
  QtApplication& application_;
};

}  // namespace torvane
