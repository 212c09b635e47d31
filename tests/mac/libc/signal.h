#pragma once

#include <darwin_types.h>

#define SIGHUP 1
#define SIGINT 2
#define SIGKILL 9
#define SIGSEGV 11
#define SIGPIPE 13
#define SIGTERM 15
#define SIGSTOP 17
#define SIGABRT 6
#define SIGFPE 8
#define SIGILL 4
#define SIG_DFL ((void (*)(int))0)
#define SIG_IGN ((void (*)(int))1)
#define SIG_ERR ((void (*)(int)) - 1)

DARWIN_BEGIN
typedef int sig_atomic_t;
typedef uint32_t sigset_t;
typedef struct {
  int si_signo, si_errno, si_code;
  pid_t si_pid;
  uid_t si_uid;
  int si_status;
  void* si_addr;
  union {
    int sival_int;
    void* sival_ptr;
  } si_value;
  long si_band;
  unsigned long __pad[7];
} siginfo_t;

int kill(pid_t, int);
int raise(int);
void (*signal(int, void (*)(int)))(int);
int sigemptyset(sigset_t*);
int sigfillset(sigset_t*);
int sigaddset(sigset_t*, int);
int sigdelset(sigset_t*, int);
DARWIN_END
