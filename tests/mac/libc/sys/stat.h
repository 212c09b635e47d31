#pragma once

#include <darwin_types.h>

#define S_IFMT 0170000
#define S_IFCHR 0020000
#define S_IFDIR 0040000
#define S_IFREG 0100000
#define S_IFLNK 0120000
#define S_ISCHR(m) (((m)&S_IFMT) == S_IFCHR)
#define S_ISDIR(m) (((m)&S_IFMT) == S_IFDIR)
#define S_ISREG(m) (((m)&S_IFMT) == S_IFREG)
#define S_ISLNK(m) (((m)&S_IFMT) == S_IFLNK)
#define S_IWGRP 0000020
#define S_ISVTX 0001000
#define S_IWOTH 0000002
#define S_IRWXU 0000700
#define S_IRWXG 0000070
#define S_IRWXO 0000007

DARWIN_BEGIN
// With 64-bit inode numbers, the only kind on arm64; on x86_64 the functions' names say so.
struct stat {
  dev_t st_dev;
  mode_t st_mode;
  nlink_t st_nlink;
  ino_t st_ino;
  uid_t st_uid;
  gid_t st_gid;
  dev_t st_rdev;
  struct timespec st_atimespec;
  struct timespec st_mtimespec;
  struct timespec st_ctimespec;
  struct timespec st_birthtimespec;
  off_t st_size;
  long long st_blocks;
  int st_blksize;
  uint32_t st_flags;
  uint32_t st_gen;
  int st_lspare;
  long long st_qspare[2];
};
#if defined(__x86_64__)
#define DARWIN_INODE64(name) __asm("_" name "$INODE64")
#else
#define DARWIN_INODE64(name)
#endif
int stat(const char*, struct stat*) DARWIN_INODE64("stat");
int lstat(const char*, struct stat*) DARWIN_INODE64("lstat");
int fstat(int, struct stat*) DARWIN_INODE64("fstat");
int mkdir(const char*, mode_t);
int chmod(const char*, mode_t);
int fchmod(int, mode_t);
mode_t umask(mode_t);
DARWIN_END
