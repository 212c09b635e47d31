#include "platform/mac/mac_workspace.h"

#import <AppKit/AppKit.h>

#include "platform/mac/mac_text.h"

namespace torvane {

void MacWorkspace::openURL(const std::string& url) {
  NSURL* address = [NSURL URLWithString:toNSString(url)];
  if (address != nil) [[NSWorkspace sharedWorkspace] openURL:address];
}

bool MacWorkspace::moveToTrash(const std::string& path) {
  return [[NSFileManager defaultManager] trashItemAtURL:[NSURL fileURLWithPath:toNSString(path)]
                                       resultingItemURL:nil
                                                  error:nil];
}

}  // namespace torvane
