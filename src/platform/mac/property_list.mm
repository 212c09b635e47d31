#include "platform/mac/property_list.h"

#import <CoreFoundation/CoreFoundation.h>

#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

JsonValue fromNumber(NSNumber* number) {
  const auto reference = (__bridge CFTypeRef)number;
  if (CFGetTypeID(reference) == CFBooleanGetTypeID())
    return JsonValue(number.boolValue ? true : false);
  if (CFNumberIsFloatType(static_cast<CFNumberRef>(reference))) return number.doubleValue;
  return static_cast<std::int64_t>(number.longLongValue);
}

std::optional<JsonValue> fromArray(NSArray* array) {
  JsonArray values;
  for (id element in array) {
    auto value = fromPropertyList(element);
    if (!value) return std::nullopt;
    values.push_back(std::move(*value));
  }
  return values;
}

std::optional<JsonValue> fromDictionary(NSDictionary* dictionary) {
  JsonObject object;
  for (id key in dictionary) {
    auto value = fromPropertyList([dictionary objectForKey:key]);
    if (!value || ![key isKindOfClass:[NSString class]]) return std::nullopt;
    object[toText(key)] = std::move(*value);
  }
  return object;
}

id toNSArray(const JsonArray& values) {
  NSMutableArray* array = [NSMutableArray array];
  for (const auto& value : values) {
    id element = toPropertyList(value);
    if (element != nil) [array addObject:element];
  }
  return array;
}

id toNSDictionary(const JsonObject& object) {
  NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
  for (const auto& entry : object) {
    id value = toPropertyList(entry.value());
    if (value != nil) [dictionary setObject:value forKey:toNSString(entry.key())];
  }
  return dictionary;
}

}  // namespace

std::optional<JsonValue> fromPropertyList(id value) {
  if ([value isKindOfClass:[NSString class]]) return JsonValue(toText(value));
  if ([value isKindOfClass:[NSNumber class]]) return fromNumber(value);
  if ([value isKindOfClass:[NSArray class]]) return fromArray(value);
  if ([value isKindOfClass:[NSDictionary class]]) return fromDictionary(value);
  return std::nullopt;
}

id toPropertyList(const JsonValue& value) {
  switch (value.kind()) {
    case boost::json::kind::null:
      return nil;
    case boost::json::kind::bool_:
      return [NSNumber numberWithBool:value.get_bool()];
    case boost::json::kind::int64:
      return [NSNumber numberWithLongLong:value.get_int64()];
    case boost::json::kind::uint64:
      return [NSNumber numberWithUnsignedLongLong:value.get_uint64()];
    case boost::json::kind::double_:
      return [NSNumber numberWithDouble:value.get_double()];
    case boost::json::kind::string:
      return toNSString({value.get_string().data(), value.get_string().size()});
    case boost::json::kind::array:
      return toNSArray(value.get_array());
    case boost::json::kind::object:
      return toNSDictionary(value.get_object());
  }
  return nil;
}

}  // namespace torvane
