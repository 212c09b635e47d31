// The program on a Linux desktop: makes every adapter once and runs until it is told to end.

#include <QApplication>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "app/bridge_delegate.h"
#include "engine/python_diagnosis.h"
#include "platform/linux/curl_http_session.h"
#include "platform/linux/display_guard.h"
#include "platform/linux/folder_bundle.h"
#include "platform/linux/former_log.h"
#include "platform/linux/granted_permissions.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/linux_process_info.h"
#include "platform/linux/no_code_check.h"
#include "platform/linux/peer_link.h"
#include "platform/linux/proc_running_applications.h"
#include "platform/linux/qt_alerts.h"
#include "platform/linux/qt_application.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_overlay_surface.h"
#include "platform/linux/qt_picture_decoder.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/qt_status_item.h"
#include "platform/linux/qt_workspace.h"
#include "platform/linux/single_instance.h"
#include "platform/linux/symbol_icon.h"
#include "platform/linux/system_clock.h"
#include "platform/linux/termination_signals.h"
#include "platform/linux/x11_session.h"
#include "platform/linux/x11_watch.h"
#include "platform/linux/xcb_window_server.h"
#include "platform/linux/xdg_login_item.h"
#include "platform/posix/posix_child_process.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/thread_background_queue.h"

namespace torvane {
namespace {

// The user's own for this session; empty where there is none.
std::string sessionFolder() {
  return PeerLinkOptions::fromEnvironment().runtimeFolder;
}

// One of each adapter; the later ones may use the earlier ones.
struct LinuxPlatform {
  explicit LinuxPlatform(LinuxProcessInfo& info)
      : processInfo(info), defaults(userDefaultsPath(info.homeDirectory())) {}

  LinuxProcessInfo& processInfo;
  QtMainQueue mainQueue;
  QtApplication application;
  std::unique_ptr<X11Watch> x11Watch = X11Watch::open();
  QtStatusBar statusBar{x11Watch.get()};
  QtAlerts alerts{application};
  SystemClock clock;
  JsonUserDefaults defaults;
  FolderBundle bundle{mainBundlePath()};
  GrantedAccessibility accessibility;
  GrantedPrivacyDatabase privacyDatabase;
  ProcRunningApplications runningApplications;
  QtWorkspace workspace;
  XdgLoginItem loginItem{autostartFolder(processInfo.homeDirectory()),
                         bundle.executablePath().value_or("")};
  PosixFileSystem files;
  PosixProcessLauncher processes;
  NoCodeCheck codeCheck;
  ThreadBackgroundQueue backgroundQueue;  // its thread, like those of http, uses what is above
  CurlHttpSessions http;
  std::optional<WebSocketPeerLink> peerLink{std::in_place, PeerLinkOptions::fromEnvironment()};
  std::unique_ptr<X11Session> x11 = X11Session::open();
  XcbWindowServer windowServer{x11.get()};
  QtScreens screens{x11.get()};
  QtOverlaySurfaces overlaySurfaces{clock, x11Watch.get()};
  QtPictureDecoder pictures{largestScreen};

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
                 .peerLink = *peerLink,
                 .files = files,
                 .processes = processes,
                 .windowServer = windowServer,
                 .screens = screens,
                 .overlaySurfaces = overlaySurfaces,
                 .pictures = pictures,
                 .codeCheck = codeCheck,
                 .python = kLinuxPython,
                 .texts = kLinuxTexts};
};

void configureQt() {
  // A status item has no window whose closing could mean the end.
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setQuitLockEnabled(false);
  QApplication::setApplicationName("Torvane P2P Helper");
  QApplication::setDesktopFileName("app.torvane.p2p-helper");
  QApplication::setWindowIcon(
      symbolIcon("dot.radiowaves.left.and.right", QApplication::palette(), false));
}

int run(LinuxProcessInfo& processInfo, SingleInstance& instance) {
  moveFormerLog(processInfo.homeDirectory(), processInfo.logDirectory());
  LinuxPlatform platform(processInfo);
  BridgeDelegate delegate(platform.ports);
  instance.onSecondLaunch([&] { platform.statusBar.showWindow(); });
  const TerminationSignals endingSignals([&] { platform.application.terminate(); });

  bool hasLaunched = false;
  platform.mainQueue.async([&] {
    delegate.applicationDidFinishLaunching();
    hasLaunched = true;
  });
  const int status = QApplication::exec();
  if (hasLaunched) delegate.applicationWillTerminate();
  platform.peerLink.reset();  // its thread calls the delegate, which goes first otherwise
  return status;
}

constexpr const char* kHelp =
    "torvane-p2p-helper: lets an iPad run the presentation on this computer\n\n"
    "Usage: torvane-p2p-helper [--help | --version]\n\n"
    "Puts an icon with a menu into the status area, and runs until \"Quit\" is chosen there. "
    "Started\n"
    "a second time, it brings the one that runs to the front. \"man torvane-p2p-helper\" says "
    "more;\n"
    "\"torvane-ipad\" stands in for an iPad on the command line.\n\n"
    "Ends with 0 when it was quit or ran already, and with 1 where there is no desktop.\n";

// What is asked of it instead of running; null when nothing is.
const char* replyTo(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--help" || argument == "-h") return kHelp;
    if (argument == "--version") {
      return "torvane-p2p-helper " TORVANE_VERSION " (build " TORVANE_BUILD_NUMBER ")\n";
    }
  }
  return nullptr;
}

// Ends the program where there is no display.
std::unique_ptr<QApplication> makeApplication(char** argv) {
  // Overlay and alerts have to stand above other windows, which Wayland leaves to no program; its
  // sessions have an X server for that. One that has none does without the overlay.
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "xcb;wayland");
  static int onlyTheName = 1;  // Qt keeps it
  const DisplayGuard guard;
  return std::make_unique<QApplication>(onlyTheName, argv);
}

}  // namespace
}  // namespace torvane

// Any other argument is ignored, by Qt too.
int main(int argc, char** argv) {
  if (const char* reply = torvane::replyTo(argc, argv)) return std::fputs(reply, stdout) < 0;
  // As it is for the engine, before anything is added to it.
  torvane::LinuxProcessInfo processInfo;
  const auto instance =
      torvane::SingleInstance::claim(torvane::sessionFolder(), torvane::mainBundlePath());
  if (!instance) return 0;  // the one that runs has come to the front
  const auto application = torvane::makeApplication(argv);
  torvane::configureQt();
  return torvane::run(processInfo, *instance);
}
