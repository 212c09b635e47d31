// What most sources of the program include of the standard library and of Boost, and tests besides.
#include <algorithm>
#include <boost/json.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#if defined(__OBJC__) && defined(__linux__)
#include <gtest/gtest.h>
#endif
