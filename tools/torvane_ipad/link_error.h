#pragma once

#include <boost/system/error_code.hpp>
#include <string>

namespace torvane::ipad {

// Why a connection failed, in words for people; empty for what they could not do anything about.
[[nodiscard]] std::string inWords(const boost::system::error_code& error);

}  // namespace torvane::ipad
