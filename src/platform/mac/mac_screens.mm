#include "platform/mac/mac_screens.h"

#import <AppKit/AppKit.h>

#include "platform/mac/mac_geometry.h"

namespace torvane {

std::vector<Rect> MacScreens::frames() const {
  std::vector<Rect> frames;
  for (NSScreen* screen in [NSScreen screens]) frames.push_back(toRect(screen.frame));
  return frames;
}

std::optional<Rect> MacScreens::mainFrame() const {
  NSScreen* screen = [NSScreen mainScreen];
  if (screen == nil) return std::nullopt;
  return toRect(screen.frame);
}

}  // namespace torvane
