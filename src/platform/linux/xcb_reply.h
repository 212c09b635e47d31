#pragma once

#include <cstdlib>
#include <memory>

namespace torvane {

// What libxcb hands over: a reply or an event, null for none.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, decltype([](Reply* reply) { std::free(reply); })>;

}  // namespace torvane
