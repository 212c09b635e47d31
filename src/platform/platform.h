#pragma once

#include "app/alert.h"
#include "app/application.h"
#include "app/bundle.h"
#include "app/clock.h"
#include "app/desktop_texts.h"
#include "app/login_item.h"
#include "app/main_queue.h"
#include "app/permissions.h"
#include "app/process_info.h"
#include "app/running_applications.h"
#include "app/status_item.h"
#include "app/user_defaults.h"
#include "app/workspace.h"
#include "bridge/http_session.h"
#include "engine/background_queue.h"
#include "engine/child_process.h"
#include "engine/file_system.h"
#include "engine/python_diagnosis.h"
#include "ink/overlay_surface.h"
#include "ink/picture_decoder.h"
#include "ink/window_server.h"
#include "peer/peer_session.h"
#include "update/code_check.h"

namespace torvane {

// Everything the core needs of a desktop. Each platform's entry point fills it in once; all of it
// outlives the delegate.
struct Platform {
  Application& application;
  StatusBar& statusBar;
  Alerts& alerts;
  MainQueue& mainQueue;
  BackgroundQueue& backgroundQueue;
  Clock& clock;
  UserDefaults& defaults;
  Bundle& bundle;
  ProcessInfo& processInfo;
  Accessibility& accessibility;
  PrivacyDatabase& privacyDatabase;
  RunningApplications& runningApplications;
  Workspace& workspace;
  LoginItem& loginItem;
  HttpSessions& http;
  PeerLink& peerLink;
  FileSystem& files;
  ProcessLauncher& processes;
  WindowServer& windowServer;
  Screens& screens;
  OverlaySurfaces& overlaySurfaces;
  PictureDecoder& pictures;
  const CodeCheck& codeCheck;
  const PythonSystem& python;
  const DesktopTexts& texts;
};

}  // namespace torvane
