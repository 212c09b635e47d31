// The types that the C library of macOS is made of, where they are not the compiler's own.
// abi_check.cpp holds the sizes and numbers of this folder to what is published.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define DARWIN_BEGIN extern "C" {
#define DARWIN_END }
#define DARWIN_NORETURN [[noreturn]]
#else
#define DARWIN_BEGIN
#define DARWIN_END
#define DARWIN_NORETURN _Noreturn
#endif

typedef long ssize_t;
typedef long long off_t;
typedef int pid_t;
typedef unsigned int uid_t;
typedef unsigned int gid_t;
typedef unsigned int id_t;
typedef int dev_t;
typedef unsigned long long ino_t;
typedef unsigned short mode_t;
typedef unsigned short nlink_t;
typedef long time_t;
typedef unsigned long clock_t;
typedef int suseconds_t;
typedef unsigned int useconds_t;
typedef uint32_t __uint32_t;

typedef int wint_t;
typedef uint32_t wctype_t;
typedef int wctrans_t;
// The tag is part of the mangled names of the streams.
typedef union {
  char __mbstate8[128];
  long long _mbstateL;
} __mbstate_t;
typedef __mbstate_t mbstate_t;

typedef struct _xlocale* locale_t;

struct timespec {
  time_t tv_sec;
  long tv_nsec;
};
struct timeval {
  time_t tv_sec;
  suseconds_t tv_usec;
};
