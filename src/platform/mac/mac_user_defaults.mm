#include "platform/mac/mac_user_defaults.h"

#import <Foundation/Foundation.h>

#include "platform/mac/mac_text.h"
#include "platform/mac/property_list.h"

namespace torvane {

std::optional<JsonValue> MacUserDefaults::object(const std::string& key) const {
  return fromPropertyList([[NSUserDefaults standardUserDefaults] objectForKey:toNSString(key)]);
}

bool MacUserDefaults::setObject(const std::string& key, JsonValue value) {
  [[NSUserDefaults standardUserDefaults] setObject:toPropertyList(value) forKey:toNSString(key)];
  return true;
}

bool MacUserDefaults::removeObject(const std::string& key) {
  [[NSUserDefaults standardUserDefaults] removeObjectForKey:toNSString(key)];
  return true;
}

}  // namespace torvane
