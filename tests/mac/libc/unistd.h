#pragma once

#include <darwin_types.h>

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2
#define F_OK 0
#define R_OK 4
#define _SC_PAGESIZE 29
#define _POSIX_THREADS 200112L
#define _POSIX_TIMERS -1
#define _POSIX_THREAD_SAFE_FUNCTIONS 200112L

DARWIN_BEGIN
int access(const char*, int);
int close(int);
int dup2(int, int);
int fsync(int);
uid_t geteuid(void);
pid_t getpid(void);
uid_t getuid(void);
int isatty(int);
off_t lseek(int, off_t, int);
int pipe(int[2]);
ssize_t read(int, void*, size_t);
long sysconf(int);
int unlink(const char*);
ssize_t write(int, const void*, size_t);
DARWIN_END
