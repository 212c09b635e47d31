// Values, the process and its computer.

#include <cstring>

#include "mac/fakes/fake_system.h"

extern "C" {
id runtimeAllocate(Class c) __attribute__((ns_returns_retained));
void runtimeFree(void* object);
bool runtimeIsKind(void* object, void* kind);
bool runtimeResponds(void* object, SEL selector);
}

@implementation NSObject
+ (instancetype)alloc {
  return runtimeAllocate((Class)self);
}
+ (Class)class {
  return (Class)self;
}
- (instancetype)init {
  return self;
}
- (void)dealloc {
  runtimeFree((__bridge void*)self);
}
- (id)copy {
  return self;
}
- (NSUInteger)hash {
  return (NSUInteger)(__bridge void*)self;
}
- (BOOL)isEqual:(id)other {
  return self == other;
}
- (BOOL)isKindOfClass:(Class)kind {
  return runtimeIsKind((__bridge void*)self, (__bridge void*)kind);
}
- (BOOL)respondsToSelector:(SEL)selector {
  return runtimeResponds((__bridge void*)self, selector);
}
@end

@interface NSString () {
 @public
  std::string _text;
}
- (std::string)text;
@end

@implementation NSString
- (std::string)text {
  return _text;
}
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)n encoding:(NSStringEncoding)e {
  _text.assign((const char*)bytes, n);
  return self;
}
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy {
  const std::string bytes = [self text];
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}
- (NSUInteger)length {
  return [self text].size();
}
- (BOOL)isEqualToString:(NSString*)other {
  return other != nil && [self text] == [other text];
}
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[NSString class]] && [self isEqualToString:other];
}
@end

@implementation NSSimpleCString
@end

// As the compiler writes it: flags tell bytes (0), UTF-8 (1) and UTF-16 (2).
@implementation NSConstantString
- (std::string)text {
  struct Layout {
    void* isa;
    uint32_t flags, length, size, hash;
    const char* data;
  };
  const auto* layout = (const Layout*)(__bridge void*)self;
  if ((layout->flags & 3) != 2) return {layout->data, layout->size};
  std::string utf8;
  const auto* units = (const uint16_t*)layout->data;
  for (uint32_t i = 0; i < layout->length; ++i) {
    const unsigned c = units[i];
    if (c < 0x80) {
      utf8 += (char)c;
    } else if (c < 0x800) {
      utf8 += {(char)(0xc0 | c >> 6), (char)(0x80 | (c & 63))};
    } else {
      utf8 += {(char)(0xe0 | c >> 12), (char)(0x80 | ((c >> 6) & 63)), (char)(0x80 | (c & 63))};
    }
  }
  return utf8;
}
@end

// Up to eight characters of seven bits, the first in the highest bits; the length from bit 3.
@interface TinyString : NSString
@end
@implementation TinyString
- (std::string)text {
  const auto bits = (uintptr_t)(__bridge void*)self;
  std::string text;
  for (unsigned i = 0; i < ((bits >> 3) & 31); ++i) text += (char)((bits >> (57 - i * 7)) & 127);
  return text;
}
@end

@interface NSData () {
 @public
  std::string _stored;
}
@end
@implementation NSData
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length {
  NSData* data = [[self alloc] init];
  data->_stored.assign((const char*)bytes, length);
  return data;
}
- (NSUInteger)length {
  return _stored.size();
}
- (const void*)bytes {
  return _stored.data();
}
@end

@implementation NSValue
@end

@interface NSNumber () {
 @public
  char _kind;  // as the frameworks tell them apart: b, i, d
  double _double;
  unsigned long long _integer;
}
@end
static NSNumber* number(char kind, double d, unsigned long long i) {
  NSNumber* made = [[NSNumber alloc] init];
  made->_kind = kind;
  made->_double = d;
  made->_integer = i;
  return made;
}
@implementation NSNumber
+ (NSNumber*)numberWithBool:(BOOL)v {
  return number('b', v ? 1 : 0, v ? 1 : 0);
}
+ (NSNumber*)numberWithInt:(int)v {
  return number('i', v, (unsigned long long)v);
}
+ (NSNumber*)numberWithLongLong:(long long)v {
  return number('i', (double)v, (unsigned long long)v);
}
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)v {
  return number('i', (double)v, v);
}
+ (NSNumber*)numberWithDouble:(double)v {
  return number('d', v, (unsigned long long)(long long)v);
}
- (BOOL)boolValue {
  return _integer != 0;
}
- (long long)longLongValue {
  return (long long)_integer;
}
- (unsigned long long)unsignedLongLongValue {
  return _integer;
}
- (double)doubleValue {
  return _double;
}
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[NSNumber class]] && ((NSNumber*)other)->_double == _double;
}
@end

@interface NSArray () {
 @public
  std::vector<id> _objects;
  unsigned long _changes;
}
@end
@implementation NSArray
+ (instancetype)arrayWithObjects:(const id*)objects count:(NSUInteger)count {
  NSArray* array = [[self alloc] init];
  array->_objects.assign(objects, objects + count);
  return array;
}
- (NSUInteger)count {
  return _objects.size();
}
- (BOOL)containsObject:(id)wanted {
  for (id object : _objects) {
    if ([object isEqual:wanted]) return YES;
  }
  return NO;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained*)buffer
                                    count:(NSUInteger)count {
  if (state->state != 0) return 0;
  state->state = 1;
  state->itemsPtr = (id __unsafe_unretained*)(void*)_objects.data();
  state->mutationsPtr = &_changes;
  return _objects.size();
}
@end
@implementation NSMutableArray
+ (instancetype)array {
  return [[self alloc] init];
}
- (void)addObject:(id)object {
  ++_changes;
  _objects.push_back(object);
}
@end

@interface NSDictionary () {
 @public
  std::vector<id> _keys, _values;
  unsigned long _changes;
}
@end
@implementation NSDictionary
+ (instancetype)dictionary {
  return [[self alloc] init];
}
+ (instancetype)dictionaryWithObjects:(const id*)objects
                              forKeys:(const id*)keys
                                count:(NSUInteger)count {
  NSDictionary* dictionary = [[self alloc] init];
  dictionary->_keys.assign(keys, keys + count);
  dictionary->_values.assign(objects, objects + count);
  return dictionary;
}
- (NSUInteger)count {
  return _keys.size();
}
- (id)objectForKey:(id)key {
  for (std::size_t i = 0; i < _keys.size(); ++i) {
    if ([_keys[i] isEqual:key]) return _values[i];
  }
  return nil;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained*)buffer
                                    count:(NSUInteger)count {
  if (state->state != 0) return 0;
  state->state = 1;
  state->itemsPtr = (id __unsafe_unretained*)(void*)_keys.data();
  state->mutationsPtr = &_changes;
  return _keys.size();
}
@end
@implementation NSMutableDictionary
- (void)setObject:(id)value forKey:(id)key {
  ++_changes;
  for (std::size_t i = 0; i < _keys.size(); ++i) {
    if ([_keys[i] isEqual:key]) {
      _values[i] = value;
      return;
    }
  }
  _keys.push_back(key);
  _values.push_back(value);
}
@end

@interface NSError () {
 @public
  NSString* _described;
}
@end
@implementation NSError
- (NSString*)localizedDescription {
  return _described;
}
@end
@implementation NSNotification
@end

@implementation NSBundle
+ (NSBundle*)mainBundle {
  return [[NSBundle alloc] init];
}
- (NSString*)bundlePath {
  return @"/Applications/Torvane P2P Helper.app";
}
- (NSDictionary*)infoDictionary {
  NSMutableDictionary* info = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : fake::system().info) {
    [info setObject:value forKey:fake::string(key)];
  }
  return info;
}
- (NSString*)executablePath {
  return fake::system().executable;
}
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)type {
  const auto& resources = fake::system().resources;
  const auto found = resources.find(fake::text(name) + "." + fake::text(type));
  return found != resources.end() ? fake::string(found->second) : nil;
}
@end

@implementation NSFileHandle
+ (instancetype)fileHandleForReadingAtPath:(NSString*)path {
  for (const auto& readable : fake::system().readableFiles) {
    if (readable == fake::text(path)) return [[NSFileHandle alloc] init];
  }
  return nil;
}
@end

@implementation NSHost
+ (instancetype)currentHost {
  return [[NSHost alloc] init];
}
- (NSString*)localizedName {
  return fake::system().hostName;
}
@end

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
  return [[NSProcessInfo alloc] init];
}
- (NSDictionary*)environment {
  return @{@"PATH" : @"/usr/bin"};
}
- (int)processIdentifier {
  return 4711;
}
@end

@implementation NSUserDefaults
+ (NSUserDefaults*)standardUserDefaults {
  return [[NSUserDefaults alloc] init];
}
- (id)objectForKey:(NSString*)key {
  const auto found = fake::system().defaults.find(fake::text(key));
  return found != fake::system().defaults.end() ? found->second : nil;
}
- (void)setObject:(id)value forKey:(NSString*)key {
  fake::say("defaults set " + fake::text(key));
  fake::system().defaults[fake::text(key)] = value;
}
- (void)removeObjectForKey:(NSString*)key {
  fake::system().defaults.erase(fake::text(key));
}
@end

@implementation NSProgress
- (void)cancel {
  fake::say("progress cancelled");
}
@end
@implementation NSStream
- (void)close {
  fake::say("stream closed");
}
@end
@implementation NSInputStream
@end

namespace fake {
std::string text(NSString* string) { return string != nil ? [string text] : std::string("nil"); }
NSString* string(const std::string& text) {
  return [[NSString alloc] initWithBytes:text.data()
                                  length:text.size()
                                encoding:NSUTF8StringEncoding];
}
NSError* error(const std::string& description) {
  NSError* made = [[NSError alloc] init];
  made->_described = string(description);
  return made;
}
}  // namespace fake

extern "C" {
NSString* NSTemporaryDirectory(void) { return @"/nonexistent/temporary/"; }
NSString* NSHomeDirectory(void) { return fake::string(fake::system().home); }
void NSLog(NSString* format, ...) { fake::say("NSLog " + fake::text(format)); }
CFTypeID CFGetTypeID(CFTypeRef value) { return (CFTypeID)((__bridge NSNumber*)value)->_kind; }
CFTypeID CFBooleanGetTypeID(void) { return 'b'; }
Boolean CFNumberIsFloatType(CFNumberRef value) { return ((__bridge NSNumber*)value)->_kind == 'd'; }
}
