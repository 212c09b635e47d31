#pragma once

#include <darwin_types.h>
