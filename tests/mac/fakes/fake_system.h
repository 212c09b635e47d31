// A Mac made of nothing: what the program asked of it, and what it is to answer.
#pragma once

#import <AppKit/AppKit.h>
#import <MultipeerConnectivity/MultipeerConnectivity.h>
#import <ServiceManagement/ServiceManagement.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace fake {

struct Alert {
  std::string message;
  std::string informativeText;
  std::vector<std::string> buttons;
  NSUInteger style;
  NSWindow* window;
};

struct Request {
  std::string url;
  std::string method;
  std::string body;
  std::map<std::string, std::string> headers;
  double timeout = 0;
  NSURLSession* session = nil;
  NSURLSessionDataTask* task = nil;
};

struct Timer {
  double due;
  double interval;  // 0: once
  std::function<void()> fire;
  int number = 0;
};

struct System {
  std::vector<std::string> log;  // everything that was asked for, in its order

  // The main run loop
  std::mutex mutex;
  std::vector<std::function<void()>> performed;   // for the next turn
  std::vector<std::function<void()>> dispatched;  // for the other queues
  std::vector<Timer> timers;
  double now = 1000;

  std::function<NSEvent*(NSEvent*)> monitor;  // of the program's own events
  std::set<int> heldKeys;
  NSUInteger heldButtons = 0;
  std::function<int(const Alert&)> onAlert = [](const Alert&) { return 1000; };
  std::map<std::string, id> defaults;
  std::map<std::string, id> info;
  std::vector<std::string> readableFiles;
  std::string home = "/nonexistent/home";
  std::map<std::string, std::string> resources;  // name.type → path
  NSString* executable = nil;
  NSString* hostName = @"Zoë's Mac";
  bool isTrusted = true;
  std::map<std::string, std::string> signatures;  // signed code → the requirement that it meets
  bool trashFails = false;
  std::map<int, std::string> runningApplications;  // process → bundle
  SMAppServiceStatus loginStatus = SMAppServiceStatusNotRegistered;
  bool loginFails = false;
  std::function<void()> body;  // of [NSApp run]

  NSApplication* application = nil;
  NSStatusItem* statusItem = nil;
  NSMenu* menu = nil;
  std::vector<NSMenuItem*> items;
  std::vector<NSWindow*> windows;
  std::vector<Request> requests;
  std::vector<MCSession*> sessions;
  std::vector<MCPeerID*> connected;  // to the newest session
  MCNearbyServiceAdvertiser* advertiser = nil;
  std::vector<std::pair<std::string, CGRect>> listedWindows;
  NSArray* windowList = nil;  // given instead of these
  bool listsNoWindows = false;
  std::vector<CGRect> screens = {{{0, 0}, {320, 240}}};
  std::shared_ptr<CGContext> screen;  // what the first of them shows
};

System& system();
void reset();
inline void say(const std::string& what) { system().log.push_back(what); }
bool said(const std::string& what);

// Runs what waits in the main run loop as one of its turns does: what comes in meanwhile waits for
// the next turn, of this loop or of one nested in it. False when nothing waited.
bool turn();
void settle();  // turns until nothing waits
void advance(double seconds);
void drainQueues();
void elsewhere(const std::function<void()>& work);  // on another thread, until it is done

// The screen that views draw to, in pixels of which each point has twice two; and what was drawn
// last at a point of it, from the top left: 0 nothing, 1 a point of a line, 2 an oval, else a
// picture's row and column.
constexpr double kScale = 2;
CGContextRef screen();
std::uint32_t markAt(double x, double y);

std::string text(NSString* string);
NSString* string(const std::string& text);
NSError* error(const std::string& description);

// The answer to a request, on a thread that is not the main one. Its length is announced, unless it
// is said to be another; -1: not at all.
void respond(const Request& request, int status, const std::string& type, const std::string& body);
void respond(const Request& request, int status, const std::string& body, long long announced);
void fail(const Request& request, const std::string& description);
bool followsRedirect(const Request& request, const std::string& url);

// Whether the program lets an event of this type, a click unless it is a key's, through to a
// window.
bool lets(NSEventType type, NSWindow* window, bool isRepeat = false);

void choose(NSMenuItem* item);
std::string title(NSMenuItem* item);
bool isSeparator(NSMenuItem* item);

// As the system does it, without being asked.
void move(NSWindow* window, CGRect place);

}  // namespace fake
