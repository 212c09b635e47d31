#include "platform/mac/mac_picture_decoder.h"

#import <AppKit/AppKit.h>
#import <ImageIO/ImageIO.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/mac/edge.h"
#include "platform/mac/mac_canvas.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

constexpr std::int64_t kMostPixels = 64'000'000;

// The formats with pixels. The system reads documents and camera files as well.
bool isRaster(CGImageSourceRef source) {
  NSString* type = (__bridge NSString*)CGImageSourceGetType(source);
  return [@[
    @"public.png", @"public.jpeg", @"com.compuserve.gif", @"com.microsoft.bmp", @"public.tiff",
    @"org.webmproject.webp"
  ] containsObject:type != nil ? type : @""];
}

struct Sides {
  std::int64_t width = 0, height = 0;
};

// From the picture's header: nothing is decoded.
Sides sidesOf(CGImageSourceRef source) {
  NSDictionary* properties =
      CFBridgingRelease(CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr));
  const auto side = [&](CFStringRef key) -> std::int64_t {
    id value = [properties objectForKey:(__bridge NSString*)key];
    return [value isKindOfClass:[NSNumber class]] ? [(NSNumber*)value longLongValue] : 0;
  };
  return {side(kCGImagePropertyPixelWidth), side(kCGImagePropertyPixelHeight)};
}

bool isSmallEnough(const Sides& sides) {
  return sides.width > 0 && sides.height > 0 && sides.width <= kMostPixels &&
         sides.height <= kMostPixels / sides.width;
}

// The longer side of the picture once it is no larger than it takes to cover the screen.
long long longestSideKept(const Sides& sides, const PixelSize& screen) {
  const auto longest = static_cast<double>(std::max(sides.width, sides.height));
  const double scale = std::max(screen.width / static_cast<double>(sides.width),
                                screen.height / static_cast<double>(sides.height));
  return static_cast<long long>(std::ceil(longest * std::min(scale, 1.0)));
}

PixelSize largestScreen() {
  PixelSize largest{1, 1};
  for (NSScreen* screen in [NSScreen screens]) {
    const double scale = screen.backingScaleFactor;
    largest = {std::max(largest.width, screen.frame.size.width * scale),
               std::max(largest.height, screen.frame.size.height * scale)};
  }
  return largest;
}

}  // namespace

std::shared_ptr<const Picture> decodedPicture(const Bytes& data, const PixelSize& screen) {
  const CFOwned<CGImageSourceRef> source(
      CGImageSourceCreateWithData((__bridge CFDataRef)toNSData(data), nullptr));
  if (!source || !isRaster(source.get())) return nullptr;
  const Sides sides = sidesOf(source.get());
  if (!isSmallEnough(sides)) return nullptr;
  NSDictionary* options = @{
    (__bridge NSString*)kCGImageSourceCreateThumbnailFromImageAlways : @YES,
    (__bridge NSString*)kCGImageSourceCreateThumbnailWithTransform : @YES,
    (__bridge NSString*)kCGImageSourceShouldCacheImmediately : @YES,
    (__bridge NSString*)kCGImageSourceThumbnailMaxPixelSize : @(longestSideKept(sides, screen))
  };
  CFOwned<CGImageRef> image(
      CGImageSourceCreateThumbnailAtIndex(source.get(), 0, (__bridge CFDictionaryRef)options));
  if (!image) return nullptr;
  return std::make_shared<MacPicture>(std::move(image));
}

MacPictureDecoder::MacPictureDecoder()
    : queue_(dispatch_queue_create("torvane.pictures", nullptr)) {}

MacPictureDecoder::~MacPictureDecoder() {
  dispatch_sync(queue_, ^{
                });
}

void MacPictureDecoder::decode(Bytes data,
                               std::function<void(std::shared_ptr<const Picture>)> done) {
  const PixelSize screen = largestScreen();  // here, as screens are the main thread's
  const auto file = std::make_shared<const Bytes>(std::move(data));
  dispatch_async(queue_, ^{
    std::shared_ptr<const Picture> picture;
    atEdge([&] { picture = decodedPicture(*file, screen); });
    atEdge([&] { done(picture); });  // whatever became of it: the next one waits for that
  });
}

}  // namespace torvane
