#include "platform/posix/posix_child_process.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <shared_mutex>
#include <system_error>
#include <thread>

#include "platform/posix/child_spawn.h"
#include "platform/posix/exit_watch.h"
#include "platform/posix/output_pipe.h"

namespace torvane {
namespace {

class PosixChildProcess final : public ChildProcess {
 public:
  PosixChildProcess(std::shared_ptr<ExitWatch> watch, UniqueFd output, UniqueFd exited)
      : watch_(std::move(watch)), output_(std::move(output)), exited_(std::move(exited)) {}

  [[nodiscard]] bool isRunning() const override { return watch_->isRunning(); }
  void terminate() override { watch_->signal(SIGTERM); }
  void kill() override { watch_->signal(SIGKILL); }
  int waitUntilExit() override { return watch_->wait(); }

  [[nodiscard]] Bytes readOutputToEnd() override {
    if (!output_) return {};
    return readUntilEndOrExit(std::move(output_), std::move(exited_));
  }

 private:
  std::shared_ptr<ExitWatch> watch_;
  UniqueFd output_;  // read end of the child's pipe
  UniqueFd exited_;  // reaches its end when the child has been reaped
};

LaunchResult failure(int error, const ProcessLaunch& launch) {
  return {nullptr, std::generic_category().message(error) + ": " + launch.executable};
}

struct Plumbing {
  Pipe output;
  Pipe exit;
  int childOutput = -1;  // -1: the null device
};

// None with errno set when the child's output cannot be connected.
std::optional<Plumbing> plumb(const ProcessLaunch& launch) {
  Plumbing plumbing;
  if (launch.output == ProcessOutput::file) {
    if (launch.outputFile == nullptr) {
      errno = EBADF;
      return std::nullopt;
    }
    plumbing.childOutput = launch.outputFile->descriptor();
  } else if (launch.output == ProcessOutput::pipe) {
    std::optional<Pipe> output = makePipe();
    std::optional<Pipe> exit = output ? makePipe() : std::nullopt;
    if (!exit) return std::nullopt;
    plumbing.output = std::move(*output);
    plumbing.exit = std::move(*exit);
    plumbing.childOutput = plumbing.output.writeEnd.get();
    ::fcntl(plumbing.output.readEnd.get(), F_SETFL, O_NONBLOCK);  // for what a grandchild holds
  }
  return plumbing;
}

// A child that nobody could wait for must not be left behind.
void killAndReap(pid_t pid) {
  ::kill(pid, SIGKILL);
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace

// Handlers pass together; closing waits for those inside.
class PosixProcessLauncher::HandlerGate {
 public:
  void pass(const TerminationHandler& handler, const std::shared_ptr<ChildProcess>& process) {
    const std::shared_lock lock(mutex_);
    if (open_) handler(process, process->waitUntilExit());
  }

  void close() {
    const std::unique_lock lock(mutex_);
    open_ = false;
  }

 private:
  std::shared_mutex mutex_;
  bool open_ = true;
};

PosixProcessLauncher::PosixProcessLauncher() : gate_(std::make_shared<HandlerGate>()) {}

PosixProcessLauncher::~PosixProcessLauncher() {
  gate_->close();
}

LaunchResult PosixProcessLauncher::launch(const ProcessLaunch& launch, TerminationHandler onExit) {
  std::optional<Plumbing> plumbing = plumb(launch);
  if (!plumbing) return failure(errno, launch);
  const SpawnResult spawned = spawnChild(launch, plumbing->childOutput);
  if (spawned.error != 0) return failure(spawned.error, launch);

  auto watch = std::make_shared<ExitWatch>(spawned.pid, std::move(plumbing->exit.writeEnd));
  auto process = std::make_shared<PosixChildProcess>(watch, std::move(plumbing->output.readEnd),
                                                     std::move(plumbing->exit.readEnd));
  // Without a handler the thread does not keep the handle: dropping it closes the pipe.
  const std::shared_ptr<ChildProcess> forHandler = onExit ? process : nullptr;
  try {
    std::thread([watch, forHandler, gate = gate_, handler = std::move(onExit)] {
      watch->reap();
      if (handler) gate->pass(handler, forHandler);
    }).detach();
  } catch (const std::system_error& error) {
    killAndReap(spawned.pid);
    return failure(error.code().value(), launch);
  }
  return {std::move(process), {}};
}

}  // namespace torvane
