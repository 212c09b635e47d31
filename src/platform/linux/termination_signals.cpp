#include "platform/linux/termination_signals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace torvane {
namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

// Handlers, unlike blocked signals, are not inherited by the programs that this one starts.
std::atomic<int> signalCounter = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void countSignal(int) {
  const int savedError = errno;
  ::eventfd_write(signalCounter, 1);
  errno = savedError;
}

void install(int signal) {
  struct sigaction current {};
  ::sigaction(signal, nullptr, &current);
  if (current.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = countSignal;
  action.sa_flags = SA_RESTART;
  ::sigaction(signal, &action, nullptr);
}

void uninstall(int signal) {
  struct sigaction current {};
  ::sigaction(signal, nullptr, &current);
  if (current.sa_handler == countSignal) ::signal(signal, SIG_DFL);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal) {
  signalCounter = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  auto* notifier = new QSocketNotifier(signalCounter, QSocketNotifier::Read, &listener_);
  QObject::connect(notifier, &QSocketNotifier::activated, &listener_,
                   [onSignal = std::move(onSignal)] {
                     eventfd_t ignored = 0;
                     ::eventfd_read(signalCounter, &ignored);
                     onSignal();
                   });
  for (const int signal : kSignals) install(signal);
}

TerminationSignals::~TerminationSignals() {
  for (const int signal : kSignals) uninstall(signal);
  ::close(signalCounter.exchange(-1));
}

}  // namespace torvane
