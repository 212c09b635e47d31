#pragma once

#include <darwin_types.h>

DARWIN_BEGIN
int gettimeofday(struct timeval*, void*);
DARWIN_END
