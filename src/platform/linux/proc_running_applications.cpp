#include "platform/linux/proc_running_applications.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <filesystem>
#include <string_view>

#include "platform/linux/folder_bundle.h"
#include "platform/linux/private_file.h"
#include "platform/posix/unique_fd.h"

namespace torvane {
namespace {

constexpr int kPatienceMilliseconds = 2000;
constexpr std::size_t kMostEnvironment = 4 << 20;

// The C library has these two under names of C++ in one version, and not at all in older ones.
UniqueFd openProcess(int process) {
  return UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}
bool sendSignal(const UniqueFd& process, int signal) {
  return ::syscall(SYS_pidfd_send_signal, process.get(), signal, nullptr, 0) == 0;
}

std::filesystem::path procFolder(int process) {
  return "/proc/" + std::to_string(process);
}

std::vector<int> processesOfThisUser() {
  std::vector<int> found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    int process = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), process);
    struct stat owner {};
    if (parsed.ec != std::errc{} || parsed.ptr != name.data() + name.size()) continue;
    if (::stat(entry->path().c_str(), &owner) == 0 && owner.st_uid == ::getuid()) {
      found.push_back(process);
    }
  }
  return found;
}

// None when the process has gone or hides its environment; empty when it has no such folder.
std::optional<std::string> runtimeFolder(int process) {
  constexpr std::string_view kName = "XDG_RUNTIME_DIR=";
  const auto environment = readSmallFile(procFolder(process) / "environ", kMostEnvironment);
  if (!environment) return std::nullopt;
  for (std::size_t start = 0; start < environment->size();) {
    const std::size_t end = std::min(environment->find('\0', start), environment->size());
    const std::string_view variable(environment->data() + start, end - start);
    if (variable.starts_with(kName)) return std::string(variable.substr(kName.size()));
    start = end + 1;
  }
  return std::string();
}

// A program whose file has been replaced keeps the place that it was started from.
std::optional<std::string> bundlePathOf(int process) {
  constexpr std::string_view kReplaced = " (deleted)";
  std::error_code error;
  std::string program = std::filesystem::read_symlink(procFolder(process) / "exe", error);
  if (error) return std::nullopt;
  if (program.ends_with(kReplaced)) program.resize(program.size() - kReplaced.size());
  return bundlePathOfProgram(program);
}

}  // namespace

std::vector<RunningApplication> ProcRunningApplications::withBundleIdentifier(
    const std::string& identifier) const {
  std::vector<RunningApplication> found;
  const auto session = runtimeFolder(::getpid());
  for (const int process : processesOfThisUser()) {
    auto path = bundlePathOf(process);
    if (!path || FolderBundle(*path).infoValue("CFBundleIdentifier") != JsonValue(identifier)) {
      continue;
    }
    if (runtimeFolder(process) == session) found.push_back({process, std::move(path)});
  }
  return found;
}

void ProcRunningApplications::forceTerminate(const RunningApplication& application) {
  const UniqueFd process = openProcess(application.processIdentifier);
  // The number may be another program's by now; what is held here stays the same process.
  if (!process || bundlePathOf(application.processIdentifier) != application.bundlePath) return;
  for (const int how : {SIGTERM, SIGKILL}) {
    if (!sendSignal(process, how)) return;
    pollfd end{process.get(), POLLIN, 0};
    if (::poll(&end, 1, kPatienceMilliseconds) > 0) return;
  }
}

}  // namespace torvane
