#include "platform/mac/mac_running_applications.h"

#import <AppKit/AppKit.h>

#include <cerrno>
#include <csignal>

#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

constexpr double kLookInterval = 0.05;
constexpr int kMostLooks = 60;

}  // namespace

std::vector<RunningApplication> MacRunningApplications::withBundleIdentifier(
    const std::string& identifier) const {
  std::vector<RunningApplication> found;
  for (NSRunningApplication* running in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:toNSString(identifier)]) {
    if (running.processIdentifier <= 0) continue;  // it has ended meanwhile
    RunningApplication application{running.processIdentifier, std::nullopt};
    NSString* path = running.bundleURL.path;
    if (path != nil) application.bundlePath = toText(path);
    found.push_back(std::move(application));
  }
  return found;
}

// The system's own word on whether it has gone changes with the run loop only, which is waiting.
void MacRunningApplications::forceTerminate(const RunningApplication& application) {
  [[NSRunningApplication runningApplicationWithProcessIdentifier:application.processIdentifier]
      forceTerminate];
  for (int i = 0; i < kMostLooks; ++i) {
    if (::kill(application.processIdentifier, 0) != 0 && errno == ESRCH) return;
    [NSThread sleepForTimeInterval:kLookInterval];
  }
}

}  // namespace torvane
