#pragma once

#include <darwin_types.h>

#define FIONREAD 0x4004667fUL

DARWIN_BEGIN
int ioctl(int, unsigned long, ...);
DARWIN_END
