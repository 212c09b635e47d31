#include "platform/linux/qt_main_queue.h"

#include <sys/eventfd.h>

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <cstdint>
#include <utility>

namespace torvane {
namespace {

constexpr qint64 kLongestTurnMilliseconds = 8;

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

QtMainQueue::QtMainQueue() : counter_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  auto* notifier = new QSocketNotifier(counter_.get(), QSocketNotifier::Read, &timers_);
  QObject::connect(notifier, &QSocketNotifier::activated, &timers_, [this] { runSome(); });
}

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::async(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
  if (!std::exchange(isReadable_, true)) ::eventfd_write(counter_.get(), 1);
}

void QtMainQueue::asyncWhenAwake(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
}

std::function<void()> QtMainQueue::takeFirst() {
  const std::lock_guard lock(mutex_);
  if (waiting_.empty()) return {};
  auto work = std::move(waiting_.front());
  waiting_.pop_front();
  if (waiting_.empty() && std::exchange(isReadable_, false)) {
    eventfd_t ignored = 0;
    ::eventfd_read(counter_.get(), &ignored);
  }
  return work;
}

void QtMainQueue::runSome() {
  QElapsedTimer turn;
  turn.start();
  do {
    const auto work = takeFirst();
    if (!work) return;
    work();
  } while (turn.elapsed() < kLongestTurnMilliseconds);
}

// What waits for the thread to be awake; nothing while work that wakes it is among it. That may
// show an alert, and a timer in whose slot it did so would not fire until the alert is answered.
std::deque<std::function<void()>> QtMainQueue::takeWhatRests() {
  const std::lock_guard lock(mutex_);
  if (isReadable_) return {};
  return std::exchange(waiting_, {});
}

std::function<void()> QtMainQueue::behindWhatRests(std::function<void()> work) {
  return [this, work = std::move(work)] {
    for (const auto& each : takeWhatRests()) each();
    work();
  };
}

void QtMainQueue::after(double seconds, std::function<void()> work) {
  QTimer::singleShot(milliseconds(seconds), Qt::PreciseTimer, &timers_,
                     behindWhatRests(std::move(work)));
}

void QtMainQueue::every(double seconds, std::function<void()> work) {
  auto* timer = new QTimer(&timers_);
  timer->setTimerType(Qt::PreciseTimer);
  QObject::connect(timer, &QTimer::timeout, &timers_, behindWhatRests(std::move(work)));
  timer->start(milliseconds(seconds));
}

void QtMainQueue::block(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

bool QtMainQueue::isCurrent() const {
  return std::this_thread::get_id() == mainThread_;
}

}  // namespace torvane
