#include "platform/mac/mac_process_info.h"

#import <Foundation/Foundation.h>

#include "platform/mac/mac_text.h"

namespace torvane {

MacProcessInfo::MacProcessInfo()
    : homeDirectory_(toText(NSHomeDirectory())),
      temporaryDirectory_(toText(NSTemporaryDirectory())),
      processIdentifier_([NSProcessInfo processInfo].processIdentifier) {
  while (temporaryDirectory_.size() > 1 && temporaryDirectory_.ends_with('/')) {
    temporaryDirectory_.pop_back();
  }
  NSString* name = [NSHost currentHost].localizedName;
  if (name.length > 0) hostName_ = toText(name);
  NSDictionary<NSString*, NSString*>* environment = [NSProcessInfo processInfo].environment;
  for (NSString* key in environment) {
    environment_.emplace(toText(key), toText([environment objectForKey:key]));
  }
}

}  // namespace torvane
