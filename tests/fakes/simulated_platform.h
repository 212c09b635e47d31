#pragma once

#include "engine/python_diagnosis.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_files.h"
#include "fakes/fake_http.h"
#include "fakes/fake_ink.h"
#include "fakes/fake_peer_link.h"
#include "fakes/fake_processes.h"
#include "fakes/simulated_time.h"
#include "ports/platform.h"

namespace torvane {

// A whole desktop in memory, on a virtual clock. As it comes: the welcome was shown before,
// Python works, nothing listens on the engine's port.
struct SimulatedPlatform {
  SimulatedTime time;
  CallLog log;
  FakeApplication application{log};
  FakeStatusBar statusBar{log};
  FakeAlerts alerts{time, log};
  FakeMainQueue mainQueue{time, log};
  FakeBackgroundQueue backgroundQueue{time};
  FakeClock clock{time};
  FakeUserDefaults defaults{log};
  FakeBundle bundle;
  FakeProcessInfo processInfo;
  FakeAccessibility accessibility{log};
  FakePrivacyDatabase privacyDatabase;
  FakeRunningApplications runningApplications{log};
  FakeWorkspace workspace{log};
  FakeLoginItem loginItem;
  FakeHttpSessions http{time};
  FakePeerLink peerLink{time, log};
  FakeFileSystem files;
  FakeProcessLauncher processes{time};
  FakeWindowServer windowServer;
  FakeScreens screens;
  FakeOverlaySurfaces overlaySurfaces;
  FakePictureDecoder pictures{time};
  PythonSystem python = kMacPython;
  DesktopTexts texts = kMacTexts;
  FakeCodeCheck codeCheck;

  Platform ports{application,   statusBar,       alerts,
                 mainQueue,     backgroundQueue, clock,
                 defaults,      bundle,          processInfo,
                 accessibility, privacyDatabase, runningApplications,
                 workspace,     loginItem,       http,
                 peerLink,      files,           processes,
                 windowServer,  screens,         overlaySurfaces,
                 pictures,      codeCheck,       python,
                 texts};

  SimulatedPlatform();
  ~SimulatedPlatform();
  SimulatedPlatform(const SimulatedPlatform&) = delete;
  SimulatedPlatform& operator=(const SimulatedPlatform&) = delete;

  // An engine that answers 200 to everything, from now on.
  void runEngine();

  // Which calls of the log are these, in this order? For tests of an order among others.
  [[nodiscard]] CallLog logged(const std::vector<std::string>& names) const;
};

}  // namespace torvane
