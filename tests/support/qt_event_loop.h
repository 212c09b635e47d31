#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

namespace torvane {

// Handles events until `isDone` says so; false when that takes unreasonably long.
template <typename Condition>
[[nodiscard]] bool runEventsUntil(Condition isDone) {
  const QDeadlineTimer deadline(30000);
  while (!isDone()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 1000);
  }
  return true;
}

}  // namespace torvane
