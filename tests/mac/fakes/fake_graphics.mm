// The frameworks with C functions. Drawing, which is written down and roughly painted; pictures;
// the window server; Accessibility; code signing.

#import <ApplicationServices/ApplicationServices.h>
#import <ImageIO/ImageIO.h>
#import <Security/Security.h>

#include <algorithm>
#include <cmath>

#include "mac/fakes/fake_system.h"

using fake::say;

struct Counted {
  virtual ~Counted() = default;
};
// From points to pixels that count upwards, as the frameworks have them: scale, then move.
struct Mapping {
  double scaleX = 1, scaleY = 1, moveX = 0, moveY = 0;
};
// One number for each pixel, rows from the top down: what was drawn there last.
struct Pixels {
  size_t width = 0, height = 0;
  std::vector<uint32_t> marks;
};
struct CGContext : Counted {
  Pixels pixels;
  Mapping mapping;
  std::vector<Mapping> saved;
  std::vector<CGPoint> path;

  // The pixels whose middle lies in this rectangle of points.
  void fill(CGRect rect, const std::function<uint32_t(double, double)>& markAt) {
    const auto [left, right] = range(mapping.scaleX, mapping.moveX, rect.origin.x, rect.size.width);
    const auto [low, high] = range(mapping.scaleY, mapping.moveY, rect.origin.y, rect.size.height);
    const auto height = (long)pixels.height;
    for (long up = std::max(low, 0L); up < std::min(high, height); ++up) {
      const double y = (((double)up + 0.5 - mapping.moveY) / mapping.scaleY - rect.origin.y);
      for (long x = std::max(left, 0L); x < std::min(right, (long)pixels.width); ++x) {
        const double along = ((double)x + 0.5 - mapping.moveX) / mapping.scaleX - rect.origin.x;
        pixels.marks[(size_t)((height - 1 - up) * (long)pixels.width + x)] =
            markAt(along / rect.size.width, y / rect.size.height);
      }
    }
  }

  static std::pair<long, long> range(double scale, double move, double from, double size) {
    const double one = from * scale + move, other = (from + size) * scale + move;
    return {std::lround(std::min(one, other)), std::lround(std::max(one, other))};
  }
};
struct CGColorSpace : Counted {};
struct CGImage : Counted {
  Pixels pixels;
};
struct CGImageSource : Counted {
  std::string data;
  NSString* type;
};

struct __SecCode : Counted {
  std::string path;
};
struct __SecRequirement : Counted {
  std::string text;
};

extern "C" {
void CFRelease(CFTypeRef object) { delete static_cast<const Counted*>(object); }

const CFStringRef kCGColorSpaceSRGB = (__bridge CFStringRef) @"sRGB";
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef) { return new CGColorSpace; }
CGContextRef CGBitmapContextCreate(void*, size_t width, size_t height, size_t, size_t,
                                   CGColorSpaceRef, uint32_t info) {
  if (info != (2U | 2U << 12)) say("another bitmap");
  auto* context = new CGContext;
  context->pixels = {width, height, std::vector<uint32_t>(width * height)};
  return context;
}
void* CGBitmapContextGetData(CGContextRef c) { return c->pixels.marks.data(); }
size_t CGBitmapContextGetBytesPerRow(CGContextRef c) { return c->pixels.width * 4; }
CGImageRef CGBitmapContextCreateImage(CGContextRef c) {
  auto* image = new CGImage;
  image->pixels = c->pixels;
  return image;
}
void CGContextSaveGState(CGContextRef c) { c->saved.push_back(c->mapping); }
void CGContextRestoreGState(CGContextRef c) {
  c->mapping = c->saved.back();
  c->saved.pop_back();
}
void CGContextTranslateCTM(CGContextRef c, CGFloat x, CGFloat y) {
  c->mapping.moveX += x * c->mapping.scaleX;
  c->mapping.moveY += y * c->mapping.scaleY;
}
void CGContextScaleCTM(CGContextRef c, CGFloat x, CGFloat y) {
  c->mapping.scaleX *= x;
  c->mapping.scaleY *= y;
}
void CGContextSetBlendMode(CGContextRef, CGBlendMode) {}
void CGContextSetInterpolationQuality(CGContextRef, CGInterpolationQuality) {}
// Pictures stand with their first row at the highest y.
void CGContextDrawImage(CGContextRef c, CGRect rect, CGImageRef image) {
  say(c == fake::screen() ? "to the screen" : "picture");
  const Pixels& from = image->pixels;
  c->fill(rect, [&](double x, double y) {
    const auto column = (size_t)(x * (double)from.width);
    const auto row = (size_t)((1 - y) * (double)from.height - 1e-9);
    return from.marks[row * from.width + column];
  });
}
void CGContextSetStrokeColorWithColor(CGContextRef, CGColorRef) {}
void CGContextSetFillColorWithColor(CGContextRef, CGColorRef) {}
void CGContextSetLineWidth(CGContextRef, CGFloat width) {
  say("line width " + std::to_string((int)(width * 10)));
}
void CGContextSetLineCap(CGContextRef, CGLineCap) {}
void CGContextSetLineJoin(CGContextRef, CGLineJoin) {}
void CGContextBeginPath(CGContextRef c) { c->path.clear(); }
void CGContextMoveToPoint(CGContextRef c, CGFloat x, CGFloat y) { c->path.push_back({x, y}); }
void CGContextAddLineToPoint(CGContextRef c, CGFloat x, CGFloat y) { c->path.push_back({x, y}); }
// Of a path, its points; of an oval, the rectangle around it.
void CGContextStrokePath(CGContextRef c) {
  say("stroke");
  for (const CGPoint& point : c->path) {
    c->fill({{point.x - 0.5, point.y - 0.5}, {1, 1}}, [](double, double) { return 1U; });
  }
}
void CGContextFillEllipseInRect(CGContextRef c, CGRect rect) {
  say("oval");
  c->fill(rect, [](double, double) { return 2U; });
}

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
  NSDictionary* asked = (__bridge NSDictionary*)options;
  NSNumber* longest = [asked objectForKey:(__bridge id)kCGImageSourceThumbnailMaxPixelSize];
  say("decode " + source->data + " with " + std::to_string(asked.count) + " to " +
      std::to_string(longest.longLongValue));
  auto* image = new CGImage;
  image->pixels = {2, 2, {11, 12, 21, 22}};  // row and column
  return image;
}

CFStringRef kAXTrustedCheckOptionPrompt = (__bridge CFStringRef) @"prompt";
// Code and requirements there are where the system's signatures know them.
OSStatus SecStaticCodeCreateWithPath(CFURLRef path, SecCSFlags, SecStaticCodeRef* code) {
  const std::string file = fake::text(((__bridge NSURL*)path).path);
  if (fake::system().signatures.count(file) == 0) return -67062;
  auto* made = new __SecCode;
  made->path = file;
  *code = made;
  return errSecSuccess;
}
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags, SecRequirementRef* made) {
  if (fake::text((__bridge NSString*)text).empty()) return -67052;
  *made = new __SecRequirement;
  (*made)->text = fake::text((__bridge NSString*)text);
  return errSecSuccess;
}
OSStatus SecStaticCodeCheckValidity(SecStaticCodeRef code, SecCSFlags flags,
                                    SecRequirementRef requirement) {
  say("check " + code->path + " with " + std::to_string(flags));
  const bool isMet = fake::system().signatures.at(code->path) == requirement->text;
  return isMet ? errSecSuccess : -67050;
}

Boolean AXIsProcessTrusted(void) { return fake::system().isTrusted; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  NSNumber* prompts = [(__bridge NSDictionary*)options objectForKey:@"prompt"];
  say(prompts.boolValue ? "trust with a prompt" : "trust");
  return 0;
}
}

namespace fake {

// One that its view, which counts downwards, has turned over before.
CGContextRef screen() {
  auto& shown = system().screen;
  if (!shown) {
    const CGRect& frame = system().screens.at(0);
    auto* context = new CGContext;
    const auto width = (size_t)(frame.size.width * kScale);
    const auto height = (size_t)(frame.size.height * kScale);
    context->pixels = {width, height, std::vector<uint32_t>(width * height)};
    context->mapping = {kScale, -kScale, 0, (double)height};
    shown.reset(context, [](CGContextRef c) { delete c; });
  }
  return shown.get();
}

std::uint32_t markAt(double x, double y) {
  const Pixels& pixels = screen()->pixels;
  return pixels.marks[(size_t)(y * kScale) * pixels.width + (size_t)(x * kScale)];
}

}  // namespace fake
