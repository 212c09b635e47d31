#pragma once

#import <CoreGraphics/CoreGraphics.h>

#include "ports/geometry.h"

namespace torvane {

[[nodiscard]] inline Rect toRect(const CGRect& rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

[[nodiscard]] inline CGRect toCGRect(const Rect& rect) {
  return CGRectMake(rect.x, rect.y, rect.width, rect.height);
}

}  // namespace torvane
