#pragma once

#include <signal.h>

#define WNOHANG 0x01
#define WEXITED 0x04
#define WNOWAIT 0x20
#define WIFEXITED(status) (((status)&0177) == 0)
#define WEXITSTATUS(status) (((status) >> 8) & 0xff)
#define WIFSIGNALED(status) (((status)&0177) != 0177 && ((status)&0177) != 0)
#define WTERMSIG(status) ((status)&0177)

DARWIN_BEGIN
typedef enum { P_ALL, P_PID, P_PGID } idtype_t;
int waitid(idtype_t, id_t, siginfo_t*, int);
pid_t waitpid(pid_t, int*, int);
DARWIN_END
