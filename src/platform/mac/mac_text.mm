#include "platform/mac/mac_text.h"

namespace torvane {

NSString* toNSString(const std::string& text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data()
                                              length:text.size()
                                            encoding:NSUTF8StringEncoding];
  return string != nil ? string : @"";
}

std::string toText(NSString* text) {
  NSData* data = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  return {static_cast<const char*>(data.bytes), data.length};
}

NSData* toNSData(ByteView bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }

Bytes toBytes(NSData* data) {
  const auto* first = static_cast<const std::uint8_t*>(data.bytes);
  return {first, first + data.length};
}

}  // namespace torvane
