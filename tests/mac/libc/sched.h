#pragma once

#include <darwin_types.h>

DARWIN_BEGIN
int sched_yield(void);
DARWIN_END
