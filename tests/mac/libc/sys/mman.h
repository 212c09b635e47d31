#pragma once

#include <darwin_types.h>

#define PROT_NONE 0
#define PROT_READ 1
#define PROT_WRITE 2
#define MAP_PRIVATE 0x0002
#define MAP_ANON 0x1000
#define MAP_FAILED ((void*)-1)

DARWIN_BEGIN
void* mmap(void*, size_t, int, int, int, off_t);
int munmap(void*, size_t);
int mprotect(void*, size_t, int);
int mlock(const void*, size_t);
int munlock(const void*, size_t);
DARWIN_END
