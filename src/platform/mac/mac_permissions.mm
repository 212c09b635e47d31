#include "platform/mac/mac_permissions.h"

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include "platform/mac/mac_text.h"

namespace torvane {

bool MacAccessibility::isTrusted() const { return AXIsProcessTrusted(); }

void MacAccessibility::promptForTrust() {
  NSDictionary* options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES};
  AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

bool MacPrivacyDatabase::canRead(const std::string& path) const {
  return [NSFileHandle fileHandleForReadingAtPath:toNSString(path)] != nil;
}

}  // namespace torvane
