#pragma once

#include "ports/alert.h"
#include "ports/application.h"
#include "ports/background_queue.h"
#include "ports/bundle.h"
#include "ports/child_process.h"
#include "ports/clock.h"
#include "ports/code_check.h"
#include "ports/desktop_texts.h"
#include "ports/file_system.h"
#include "ports/http_session.h"
#include "ports/login_item.h"
#include "ports/main_queue.h"
#include "ports/overlay_surface.h"
#include "ports/peer_session.h"
#include "ports/permissions.h"
#include "ports/picture_decoder.h"
#include "ports/process_info.h"
#include "ports/running_applications.h"
#include "ports/status_item.h"
#include "ports/user_defaults.h"
#include "ports/window_server.h"
#include "ports/workspace.h"

namespace torvane {

struct PythonSystem;

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
