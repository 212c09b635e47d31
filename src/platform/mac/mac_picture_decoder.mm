#include "platform/mac/mac_picture_decoder.h"

#import <Foundation/Foundation.h>
#import <ImageIO/ImageIO.h>

#include <utility>

#include "platform/mac/edge.h"
#include "platform/mac/mac_canvas.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

constexpr std::int64_t kMostPixels = 64'000'000;
constexpr int kLongestSideKept = 6144;  // more than the largest display has
// Each waiting picture may be 32 MiB of file. Whoever sends more than this is not looking at them.
constexpr int kMostWaiting = 4;

// The formats with pixels. The system reads documents and camera files as well.
bool isRaster(CGImageSourceRef source) {
  NSString* type = (__bridge NSString*)CGImageSourceGetType(source);
  return [@[
    @"public.png", @"public.jpeg", @"com.compuserve.gif", @"com.microsoft.bmp", @"public.tiff",
    @"org.webmproject.webp"
  ] containsObject:type != nil ? type : @""];
}

// From the picture's header: nothing is decoded.
bool isSmallEnough(CGImageSourceRef source) {
  NSDictionary* properties =
      CFBridgingRelease(CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr));
  const auto side = [&](CFStringRef key) -> std::int64_t {
    id value = [properties objectForKey:(__bridge NSString*)key];
    return [value isKindOfClass:[NSNumber class]] ? [(NSNumber*)value longLongValue] : 0;
  };
  const std::int64_t width = side(kCGImagePropertyPixelWidth);
  const std::int64_t height = side(kCGImagePropertyPixelHeight);
  return width > 0 && height > 0 && width <= kMostPixels && height <= kMostPixels / width;
}

}  // namespace

std::shared_ptr<const Picture> decodedPicture(const Bytes& data) {
  const CFOwned<CGImageSourceRef> source(
      CGImageSourceCreateWithData((__bridge CFDataRef)toNSData(data), nullptr));
  if (!source || !isRaster(source.get()) || !isSmallEnough(source.get())) return nullptr;
  NSDictionary* options = @{
    (__bridge NSString*)kCGImageSourceCreateThumbnailFromImageAlways : @YES,
    (__bridge NSString*)kCGImageSourceCreateThumbnailWithTransform : @YES,
    (__bridge NSString*)kCGImageSourceShouldCacheImmediately : @YES,
    (__bridge NSString*)kCGImageSourceThumbnailMaxPixelSize : @(kLongestSideKept)
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
  if (++*waiting_ > kMostWaiting) data = {};  // answered in its turn, as no picture
  const auto waiting = waiting_;
  const auto file = std::make_shared<const Bytes>(std::move(data));
  dispatch_async(queue_, ^{
    atEdge([&] { done(decodedPicture(*file)); });
    --*waiting;
  });
}

}  // namespace torvane
