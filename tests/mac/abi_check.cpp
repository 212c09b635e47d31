// Sizes, types and numbers of the C library that differ between systems and that compiled code
// has inside it. What is declared in libc/ has to agree with what macOS publishes.

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <clocale>
#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <cwchar>
#include <locale>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <type_traits>

namespace {

template <typename Type, std::size_t size>
constexpr bool isSized = sizeof(Type) == size;

static_assert(isSized<wchar_t, 4> && isSized<wint_t, 4> && isSized<mbstate_t, 128>);
static_assert(isSized<off_t, 8> && isSized<time_t, 8> && isSized<clock_t, 8>);
static_assert(isSized<tm, 56> && isSized<lconv, 96> && isSized<timespec, 16>);
static_assert(isSized<pthread_mutex_t, 64> && isSized<pthread_mutexattr_t, 16>);
static_assert(isSized<pthread_cond_t, 48> && isSized<pthread_once_t, 16>);
static_assert(isSized<pthread_attr_t, 64> && isSized<pthread_rwlock_t, 200>);
static_assert(isSized<std::mutex, 64> && isSized<std::condition_variable, 48>);
static_assert(isSized<std::recursive_mutex, 64> && isSized<std::shared_mutex, 168>);
static_assert(isSized<std::string, 24>);
static_assert(isSized<struct stat, 144> && offsetof(struct stat, st_size) == 96);
static_assert(offsetof(struct stat, st_mode) == 4 && offsetof(struct stat, st_mtimespec) == 48);
static_assert(isSized<siginfo_t, 104> && offsetof(siginfo_t, si_status) == 20);
static_assert(isSized<sigset_t, 4> && isSized<mode_t, 2> && isSized<dev_t, 4>);
static_assert(isSized<pollfd, 8> && isSized<nfds_t, 4>);
static_assert(isSized<posix_spawnattr_t, 8> && isSized<posix_spawn_file_actions_t, 8>);

static_assert(std::is_same_v<wint_t, int> && std::is_same_v<off_t, long long>);
static_assert(std::is_same_v<std::int64_t, long long> && std::is_same_v<std::intmax_t, long>);
static_assert(std::is_same_v<std::size_t, unsigned long> && std::is_same_v<std::intptr_t, long>);
static_assert(std::is_same_v<clock_t, unsigned long>);
static_assert(std::is_same_v<decltype(timeval::tv_usec), int>);

static_assert(EAGAIN == 35 && ENOTSUP == 45 && ETIMEDOUT == 60 && ELOOP == 62 && EOVERFLOW == 84);
static_assert(EILSEQ == 92 && EOPNOTSUPP == 102 && EOWNERDEAD == 105);
static_assert(CLOCK_REALTIME == 0 && CLOCK_MONOTONIC_RAW == 4 && CLOCK_MONOTONIC == 6);
static_assert(O_NONBLOCK == 4 && O_APPEND == 8 && O_CREAT == 0x200 && O_TRUNC == 0x400);
static_assert(O_NOCTTY == 0x20000 && O_CLOEXEC == 0x1000000 && F_DUPFD_CLOEXEC == 67);
static_assert(P_PID == 1 && WEXITED == 4 && WNOWAIT == 0x20 && SIGSTOP == 17 && SIGTERM == 15);
static_assert(POSIX_SPAWN_SETSIGDEF == 4 && POSIX_SPAWN_SETSIGMASK == 8);
static_assert(POSIX_SPAWN_CLOEXEC_DEFAULT == 0x4000);

}  // namespace
