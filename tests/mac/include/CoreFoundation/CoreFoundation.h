#pragma once

typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef unsigned char Boolean;
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef const struct __attribute__((objc_bridge(NSDictionary))) __CFDictionary* CFDictionaryRef;
typedef const struct __attribute__((objc_bridge(NSArray))) __CFArray* CFArrayRef;
typedef const struct __attribute__((objc_bridge(NSData))) __CFData* CFDataRef;
typedef const struct __attribute__((objc_bridge(NSURL))) __CFURL* CFURLRef;
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFNumber* CFNumberRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef CFStringRef CFRunLoopMode;

extern "C" {
extern const CFRunLoopMode kCFRunLoopCommonModes;
void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);
Boolean CFNumberIsFloatType(CFNumberRef number);
CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopPerformBlock(CFRunLoopRef rl, CFTypeRef mode, void (^block)(void));
void CFRunLoopWakeUp(CFRunLoopRef rl);
}
