#include "platform/posix/child_spawn.h"

#include <fcntl.h>
#include <spawn.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "platform/posix/unique_fd.h"

extern char** environ;

namespace torvane {
namespace {

constexpr int kFirstPrivateDescriptor = 3;

// The null-terminated array of C strings that the system call wants. The strings stay owned here.
class StringArray {
 public:
  explicit StringArray(std::vector<std::string> strings) : strings_(std::move(strings)) {
    for (std::string& string : strings_) pointers_.push_back(string.data());
    pointers_.push_back(nullptr);
  }

  [[nodiscard]] char* const* data() const { return pointers_.data(); }

  // A string cut short at an embedded zero byte would not be what the caller meant.
  [[nodiscard]] bool hasEmbeddedZero() const {
    for (const std::string& string : strings_) {
      if (string.find('\0') != std::string::npos) return true;
    }
    return false;
  }

 private:
  std::vector<std::string> strings_;
  std::vector<char*> pointers_;
};

StringArray argumentsOf(const ProcessLaunch& launch) {
  std::vector<std::string> strings{launch.executable};
  strings.insert(strings.end(), launch.arguments.begin(), launch.arguments.end());
  return StringArray(std::move(strings));
}

StringArray environmentOf(const ProcessLaunch& launch) {
  std::vector<std::string> strings;
  if (launch.environment) {
    for (const auto& [name, value] : *launch.environment) strings.push_back(name + "=" + value);
  } else {
    for (char** entry = environ; *entry != nullptr; ++entry) strings.emplace_back(*entry);
  }
  return StringArray(std::move(strings));
}

class FileActions {
 public:
  explicit FileActions(int output) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output >= 0) {
      posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    } else {
      posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
    // Elsewhere POSIX_SPAWN_CLOEXEC_DEFAULT, or the close-on-exec flag on everything we open,
    // does the same.
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 34)
    posix_spawn_file_actions_addclosefrom_np(&actions_, kFirstPrivateDescriptor);
#endif
  }
  ~FileActions() {
    posix_spawn_file_actions_destroy(&actions_);
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  [[nodiscard]] const posix_spawn_file_actions_t* get() const {
    return &actions_;
  }

 private:
  posix_spawn_file_actions_t actions_{};
};

// An ignored or blocked signal is inherited through exec; a child must start with none.
class DefaultSignals {
 public:
  DefaultSignals() {
    posix_spawnattr_init(&attributes_);
    sigset_t all;
    sigfillset(&all);
    sigdelset(&all, SIGKILL);
    sigdelset(&all, SIGSTOP);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
    flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
  }
  ~DefaultSignals() {
    posix_spawnattr_destroy(&attributes_);
  }
  DefaultSignals(const DefaultSignals&) = delete;
  DefaultSignals& operator=(const DefaultSignals&) = delete;

  [[nodiscard]] const posix_spawnattr_t* get() const {
    return &attributes_;
  }

 private:
  posix_spawnattr_t attributes_{};
};

}  // namespace

SpawnResult spawnChild(const ProcessLaunch& launch, int outputDescriptor) {
  const StringArray arguments = argumentsOf(launch);
  const StringArray environment = environmentOf(launch);
  if (arguments.hasEmbeddedZero() || environment.hasEmbeddedZero()) return {-1, EINVAL};

  // Moved out of the way of 0, 1 and 2, which the actions replace one after the other.
  UniqueFd output;
  if (outputDescriptor >= 0) {
    output = UniqueFd(::fcntl(outputDescriptor, F_DUPFD_CLOEXEC, kFirstPrivateDescriptor));
    if (!output) return {-1, errno};
  }
  const FileActions actions(output.get());
  const DefaultSignals signals;
  SpawnResult result;
  result.error = ::posix_spawn(&result.pid, launch.executable.c_str(), actions.get(), signals.get(),
                               arguments.data(), environment.data());
  return result;
}

}  // namespace torvane
