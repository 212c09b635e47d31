// The program on a Mac: makes every adapter once and runs until it is told to end.

#import <AppKit/AppKit.h>

#include "app/bridge_delegate.h"
#include "engine/python_diagnosis.h"
#include "platform/mac/application_delegate.h"
#include "platform/mac/mac_alerts.h"
#include "platform/mac/mac_application.h"
#include "platform/mac/mac_bundle.h"
#include "platform/mac/mac_clock.h"
#include "platform/mac/mac_code_check.h"
#include "platform/mac/mac_http_session.h"
#include "platform/mac/mac_login_item.h"
#include "platform/mac/mac_main_queue.h"
#include "platform/mac/mac_overlay_surface.h"
#include "platform/mac/mac_peer_link.h"
#include "platform/mac/mac_permissions.h"
#include "platform/mac/mac_picture_decoder.h"
#include "platform/mac/mac_process_info.h"
#include "platform/mac/mac_running_applications.h"
#include "platform/mac/mac_screens.h"
#include "platform/mac/mac_status_item.h"
#include "platform/mac/mac_user_defaults.h"
#include "platform/mac/mac_window_server.h"
#include "platform/mac/mac_workspace.h"
#include "platform/posix/posix_child_process.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/thread_background_queue.h"

namespace torvane {
namespace {

// One of each adapter; the later ones may use the earlier ones.
struct MacPlatform {
  MacMainQueue mainQueue;
  MacApplication application{mainQueue};
  MacStatusBar statusBar;
  MacAlerts alerts;
  MacClock clock;
  MacUserDefaults defaults;
  MacBundle bundle;
  MacProcessInfo processInfo;
  MacAccessibility accessibility;
  MacPrivacyDatabase privacyDatabase;
  MacRunningApplications runningApplications;
  MacWorkspace workspace;
  MacLoginItem loginItem;
  PosixFileSystem files;
  PosixProcessLauncher processes;
  MacCodeCheck codeCheck;
  ThreadBackgroundQueue
      backgroundQueue;  // its thread, and those of the next, use those before them
  MacHttpSessions http;
  MacPeerLink peerLink;
  MacWindowServer windowServer;
  MacScreens screens;
  MacOverlaySurfaces overlaySurfaces{clock};
  MacPictureDecoder pictures;

  Platform ports{.application = application,
                 .statusBar = statusBar,
                 .alerts = alerts,
                 .mainQueue = mainQueue,
                 .backgroundQueue = backgroundQueue,
                 .clock = clock,
                 .defaults = defaults,
                 .bundle = bundle,
                 .processInfo = processInfo,
                 .accessibility = accessibility,
                 .privacyDatabase = privacyDatabase,
                 .runningApplications = runningApplications,
                 .workspace = workspace,
                 .loginItem = loginItem,
                 .http = http,
                 .peerLink = peerLink,
                 .files = files,
                 .processes = processes,
                 .windowServer = windowServer,
                 .screens = screens,
                 .overlaySurfaces = overlaySurfaces,
                 .pictures = pictures,
                 .codeCheck = codeCheck,
                 .python = kMacPython,
                 .texts = kMacTexts};
};

}  // namespace
}  // namespace torvane

// There is no command line: whatever is given is ignored.
int main() {
  @autoreleasepool {
    NSApplication* application = [NSApplication sharedApplication];
    torvane::MacPlatform platform;
    torvane::BridgeDelegate delegate(platform.ports);
    // The application does not keep its delegate: it has to live here until the end.
    __attribute__((objc_precise_lifetime)) TorvaneApplicationDelegate* applicationDelegate =
        [[TorvaneApplicationDelegate alloc] initWithDelegate:&delegate];
    application.delegate = applicationDelegate;
    [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
    [application run];
  }
  return 0;
}
