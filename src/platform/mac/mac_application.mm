#include "platform/mac/mac_application.h"

#import <AppKit/AppKit.h>

namespace torvane {

void MacApplication::activateIgnoringOtherApps() { [NSApp activateIgnoringOtherApps:YES]; }

// The system's own call comes back only when somebody objects to the end: it ends the process.
void MacApplication::terminate() {
  mainQueue_.async([] { [NSApp terminate:nil]; });
}

}  // namespace torvane
