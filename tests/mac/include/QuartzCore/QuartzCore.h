#pragma once

#include <Foundation/Foundation.h>

extern "C" double CACurrentMediaTime(void);
