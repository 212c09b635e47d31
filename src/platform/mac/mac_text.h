#pragma once

#import <Foundation/Foundation.h>

#include <string>

#include "protocol/bytes.h"

namespace torvane {

// Text that is not UTF-8 becomes empty.
[[nodiscard]] NSString* toNSString(const std::string& text);

// UTF-8; half a surrogate pair becomes a replacement character, none becomes empty.
[[nodiscard]] std::string toText(NSString* text);

[[nodiscard]] NSData* toNSData(ByteView bytes);
[[nodiscard]] Bytes toBytes(NSData* data);

}  // namespace torvane
