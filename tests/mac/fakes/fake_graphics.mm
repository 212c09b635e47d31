// Drawing, which is only written down; pictures; the window server; Accessibility.

#import <ApplicationServices/ApplicationServices.h>
#import <ImageIO/ImageIO.h>

#include "mac/fakes/fake_system.h"

using fake::say;

struct Counted {
  virtual ~Counted() = default;
};
struct CGContext : Counted {
  size_t width = 0, height = 0;
  std::vector<uint8_t> pixels;
};
struct CGColorSpace : Counted {};
struct CGImage : Counted {};
struct CGImageSource : Counted {
  std::string data;
  NSString* type;
};

extern "C" {
void CFRelease(CFTypeRef object) { delete static_cast<const Counted*>(object); }

const CFStringRef kCGColorSpaceSRGB = (__bridge CFStringRef) @"sRGB";
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef) { return new CGColorSpace; }
CGContextRef CGBitmapContextCreate(void*, size_t width, size_t height, size_t, size_t,
                                   CGColorSpaceRef, uint32_t info) {
  if (info != (2U | 2U << 12)) say("another bitmap");
  auto* context = new CGContext;
  context->width = width;
  context->height = height;
  context->pixels.resize(width * height * 4);
  return context;
}
void* CGBitmapContextGetData(CGContextRef c) { return c->pixels.data(); }
size_t CGBitmapContextGetBytesPerRow(CGContextRef c) { return c->width * 4; }
CGImageRef CGBitmapContextCreateImage(CGContextRef) { return new CGImage; }
void CGContextSaveGState(CGContextRef) {}
void CGContextRestoreGState(CGContextRef) {}
void CGContextTranslateCTM(CGContextRef, CGFloat, CGFloat) {}
void CGContextScaleCTM(CGContextRef, CGFloat, CGFloat) {}
void CGContextSetBlendMode(CGContextRef, CGBlendMode) {}
void CGContextSetInterpolationQuality(CGContextRef, CGInterpolationQuality) {}
void CGContextDrawImage(CGContextRef c, CGRect, CGImageRef) {
  say(c == nullptr ? "to the screen" : "picture");
}
void CGContextSetStrokeColorWithColor(CGContextRef, CGColorRef) {}
void CGContextSetFillColorWithColor(CGContextRef, CGColorRef) {}
void CGContextSetLineWidth(CGContextRef, CGFloat width) {
  say("line width " + std::to_string((int)(width * 10)));
}
void CGContextSetLineCap(CGContextRef, CGLineCap) {}
void CGContextSetLineJoin(CGContextRef, CGLineJoin) {}
void CGContextBeginPath(CGContextRef) {}
void CGContextMoveToPoint(CGContextRef, CGFloat, CGFloat) {}
void CGContextAddLineToPoint(CGContextRef, CGFloat, CGFloat) {}
void CGContextStrokePath(CGContextRef) { say("stroke"); }
void CGContextFillEllipseInRect(CGContextRef, CGRect) { say("oval"); }

const CFStringRef kCGWindowOwnerName = (__bridge CFStringRef) @"owner";
const CFStringRef kCGWindowBounds = (__bridge CFStringRef) @"bounds";
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption options, CGWindowID window) {
  if (options != 17 || window != 0 || fake::system().listsNoWindows) return nullptr;
  if (NSArray* given = fake::system().windowList) return (__bridge_retained CFArrayRef)given;
  NSMutableArray* list = [NSMutableArray array];
  for (const auto& [owner, bounds] : fake::system().listedWindows) {
    [list addObject:@{
      @"owner" : fake::string(owner),
      @"bounds" : @{
        @"X" : @(bounds.origin.x),
        @"Y" : @(bounds.origin.y),
        @"Width" : @(bounds.size.width),
        @"Height" : @(bounds.size.height)
      }
    }];
  }
  return (__bridge_retained CFArrayRef)list;
}

const CFStringRef kCGImagePropertyPixelWidth = (__bridge CFStringRef) @"width";
const CFStringRef kCGImagePropertyPixelHeight = (__bridge CFStringRef) @"height";
const CFStringRef kCGImageSourceCreateThumbnailFromImageAlways = (__bridge CFStringRef) @"always";
const CFStringRef kCGImageSourceCreateThumbnailWithTransform = (__bridge CFStringRef) @"turned";
const CFStringRef kCGImageSourceShouldCacheImmediately = (__bridge CFStringRef) @"at once";
const CFStringRef kCGImageSourceThumbnailMaxPixelSize = (__bridge CFStringRef) @"longest side";

// A picture is a text: its type, its width and its height.
CGImageSourceRef CGImageSourceCreateWithData(CFDataRef data, CFDictionaryRef) {
  NSData* file = (__bridge NSData*)data;
  auto* source = new CGImageSource;
  source->data.assign((const char*)file.bytes, file.length);
  return source;
}
CFStringRef CGImageSourceGetType(CGImageSourceRef source) {
  source->type = fake::string(source->data.substr(0, source->data.find(' ')));
  return (__bridge CFStringRef)source->type;
}
CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t,
                                                   CFDictionaryRef) {
  long long width = 0, height = 0;
  std::sscanf(source->data.c_str(), "%*s %lld %lld", &width, &height);
  return (__bridge_retained CFDictionaryRef) @{@"width" : @(width), @"height" : @(height)};
}
CGImageRef CGImageSourceCreateThumbnailAtIndex(CGImageSourceRef source, size_t,
                                               CFDictionaryRef options) {
  say("decode " + source->data + " with " +
      std::to_string(((__bridge NSDictionary*)options).count));
  return new CGImage;
}

CFStringRef kAXTrustedCheckOptionPrompt = (__bridge CFStringRef) @"prompt";
Boolean AXIsProcessTrusted(void) { return fake::system().isTrusted; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  NSNumber* prompts = [(__bridge NSDictionary*)options objectForKey:@"prompt"];
  say(prompts.boolValue ? "trust with a prompt" : "trust");
  return 0;
}
}
