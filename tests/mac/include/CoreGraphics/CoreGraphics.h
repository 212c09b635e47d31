#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>
#include <stdint.h>

typedef double CGFloat;
struct CGPoint {
  CGFloat x, y;
};
struct CGSize {
  CGFloat width, height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}

typedef struct CGContext* CGContextRef;
typedef struct CGColor* CGColorRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGImage* CGImageRef;

enum CGImageAlphaInfo : uint32_t { kCGImageAlphaPremultipliedFirst = 2 };
enum CGImageByteOrderInfo : uint32_t { kCGImageByteOrder32Little = 2 << 12 };
enum CGInterpolationQuality : int32_t { kCGInterpolationNone = 1, kCGInterpolationHigh = 3 };
enum CGLineCap : int32_t { kCGLineCapRound = 1 };
enum CGLineJoin : int32_t { kCGLineJoinRound = 1 };
enum CGBlendMode : int32_t { kCGBlendModeCopy = 17 };
typedef uint32_t CGWindowID;
typedef uint32_t CGWindowListOption;
enum __attribute__((flag_enum)) : CGWindowListOption {
  kCGWindowListOptionOnScreenOnly = 1 << 0,
  kCGWindowListExcludeDesktopElements = 1 << 4
};
enum CGEventSourceStateID : int32_t { kCGEventSourceStateCombinedSessionState = 0 };
typedef uint16_t CGKeyCode;
#define kCGNullWindowID ((CGWindowID)0)

extern "C" {
extern const CFStringRef kCGColorSpaceSRGB;
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);

CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo);
void* CGBitmapContextGetData(CGContextRef context);
size_t CGBitmapContextGetBytesPerRow(CGContextRef context);
CGImageRef CGBitmapContextCreateImage(CGContextRef context);

void CGContextSaveGState(CGContextRef c);
void CGContextRestoreGState(CGContextRef c);
void CGContextTranslateCTM(CGContextRef c, CGFloat tx, CGFloat ty);
void CGContextScaleCTM(CGContextRef c, CGFloat sx, CGFloat sy);
void CGContextSetBlendMode(CGContextRef c, CGBlendMode mode);
void CGContextSetInterpolationQuality(CGContextRef c, CGInterpolationQuality quality);
void CGContextDrawImage(CGContextRef c, CGRect rect, CGImageRef image);
void CGContextSetStrokeColorWithColor(CGContextRef c, CGColorRef color);
void CGContextSetFillColorWithColor(CGContextRef c, CGColorRef color);
void CGContextSetLineWidth(CGContextRef c, CGFloat width);
void CGContextSetLineCap(CGContextRef c, CGLineCap cap);
void CGContextSetLineJoin(CGContextRef c, CGLineJoin join);
void CGContextBeginPath(CGContextRef c);
void CGContextMoveToPoint(CGContextRef c, CGFloat x, CGFloat y);
void CGContextAddLineToPoint(CGContextRef c, CGFloat x, CGFloat y);
void CGContextStrokePath(CGContextRef c);
void CGContextFillEllipseInRect(CGContextRef c, CGRect rect);

bool CGEventSourceKeyState(CGEventSourceStateID stateID, CGKeyCode key);

extern const CFStringRef kCGWindowOwnerName;
extern const CFStringRef kCGWindowBounds;
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow)
    __attribute__((cf_returns_retained));
}
