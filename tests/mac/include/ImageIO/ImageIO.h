#pragma once

#include <CoreGraphics/CoreGraphics.h>

typedef struct CGImageSource* CGImageSourceRef;

extern "C" {
extern const CFStringRef kCGImagePropertyPixelWidth;
extern const CFStringRef kCGImagePropertyPixelHeight;
extern const CFStringRef kCGImageSourceCreateThumbnailFromImageAlways;
extern const CFStringRef kCGImageSourceCreateThumbnailWithTransform;
extern const CFStringRef kCGImageSourceShouldCacheImmediately;
extern const CFStringRef kCGImageSourceThumbnailMaxPixelSize;

CGImageSourceRef CGImageSourceCreateWithData(CFDataRef data, CFDictionaryRef options);
CFStringRef CGImageSourceGetType(CGImageSourceRef isrc);
CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef isrc, size_t index,
                                                   CFDictionaryRef options)
    __attribute__((cf_returns_retained));
CGImageRef CGImageSourceCreateThumbnailAtIndex(CGImageSourceRef isrc, size_t index,
                                               CFDictionaryRef options);
}
