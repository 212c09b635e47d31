#include "platform/mac/mac_window_server.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

// None unless every key is a text and every value a number.
std::optional<std::map<std::string, double>> boundsOf(id value) {
  if (![value isKindOfClass:[NSDictionary class]]) return std::nullopt;
  std::map<std::string, double> bounds;
  for (id key in (NSDictionary*)value) {
    id number = [(NSDictionary*)value objectForKey:key];
    if (![key isKindOfClass:[NSString class]] || ![number isKindOfClass:[NSNumber class]]) {
      return std::nullopt;
    }
    bounds.emplace(toText(key), [(NSNumber*)number doubleValue]);
  }
  return bounds;
}

WindowInfo described(NSDictionary* window) {
  WindowInfo info;
  id owner = [window objectForKey:(__bridge NSString*)kCGWindowOwnerName];
  if ([owner isKindOfClass:[NSString class]]) info.ownerName = toText(owner);
  info.bounds = boundsOf([window objectForKey:(__bridge NSString*)kCGWindowBounds]);
  return info;
}

}  // namespace

std::optional<std::vector<WindowInfo>> MacWindowServer::onScreenWindows() {
  NSArray* windows = CFBridgingRelease(CGWindowListCopyWindowInfo(
      kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
  if (windows == nil) return std::nullopt;
  std::vector<WindowInfo> listed;
  for (id window in windows) {
    if (![window isKindOfClass:[NSDictionary class]]) return std::nullopt;
    listed.push_back(described(window));
  }
  return listed;
}

}  // namespace torvane
