#include "platform/mac/mac_bundle.h"

#import <Foundation/Foundation.h>

#include "platform/mac/mac_text.h"
#include "platform/mac/property_list.h"

namespace torvane {

std::string MacBundle::path() const { return toText([NSBundle mainBundle].bundlePath); }

std::optional<std::string> MacBundle::executablePath() const {
  NSString* path = [NSBundle mainBundle].executablePath;
  if (path == nil) return std::nullopt;
  return toText(path);
}

std::optional<std::string> MacBundle::pathForResource(const std::string& name,
                                                      const std::string& type) const {
  NSString* path = [[NSBundle mainBundle] pathForResource:toNSString(name) ofType:toNSString(type)];
  if (path == nil) return std::nullopt;
  return toText(path);
}

std::optional<JsonValue> MacBundle::infoValue(const std::string& key) const {
  return fromPropertyList([[NSBundle mainBundle].infoDictionary objectForKey:toNSString(key)]);
}

}  // namespace torvane
