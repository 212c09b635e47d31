// The application, its status item, menu, alerts and windows. The compiler writes the methods of
// the properties that have no meaning here.

#include "mac/fakes/fake_system.h"

namespace fake {

static System* current = nullptr;
System& system() {
  if (current == nullptr) current = new System;
  return *current;
}
void reset() {
  NSApp = nil;
  delete current;
  current = nullptr;
}
bool said(const std::string& what) {
  for (const auto& line : system().log) {
    if (line == what) return true;
  }
  return false;
}

}  // namespace fake

using fake::say;

__kindof NSApplication* NSApp;

@implementation NSResponder
@end

@implementation NSApplication
+ (NSApplication*)sharedApplication {
  if (NSApp == nil) NSApp = [[NSApplication alloc] init];
  return NSApp;
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  say("policy " + std::to_string(policy));
  return YES;
}
- (void)activateIgnoringOtherApps:(BOOL)ignoring {
  say(ignoring ? "to the front" : "asked to come");
}
- (void)run {
  if ([self.delegate respondsToSelector:@selector(applicationDidFinishLaunching:)]) {
    [self.delegate applicationDidFinishLaunching:[[NSNotification alloc] init]];
  }
  fake::system().body();
}
- (void)terminate:(id)sender {
  say("terminate");
  if ([self.delegate respondsToSelector:@selector(applicationWillTerminate:)]) {
    [self.delegate applicationWillTerminate:[[NSNotification alloc] init]];
  }
  say("ended");
}
@end

@implementation NSColor
+ (NSColor*)clearColor {
  static NSColor* clear = [[NSColor alloc] init];
  return clear;
}
+ (NSColor*)systemRedColor {
  static NSColor* red = [[NSColor alloc] init];
  return red;
}
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha {
  return self;
}
- (CGColorRef)CGColor {
  return nullptr;
}
@end

@interface NSImage () {
 @public
  std::string _name;
  BOOL _isTemplate;
}
@end
@implementation NSImage
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  NSImage* image = [[NSImage alloc] init];
  image->_name = fake::text(name) + ", " + fake::text(description);
  return image;
}
- (void)setTemplate:(BOOL)isTemplate {
  _isTemplate = isTemplate;
}
@end

@implementation NSGraphicsContext
+ (NSGraphicsContext*)currentContext {
  return [[NSGraphicsContext alloc] init];
}
+ (void)setCurrentContext:(NSGraphicsContext*)context {
}
- (CGContextRef)CGContext {
  return fake::screen();
}
@end

@implementation NSView {
  __weak NSWindow* _shownBy;
}
- (instancetype)initWithFrame:(NSRect)frame {
  self.bounds = {{0, 0}, frame.size};
  return self;
}
- (void)drawRect:(NSRect)dirty {
}
- (NSWindow*)window {
  return fake::system().windows.empty() ? nil : fake::system().windows.back();
}
- (void)setFrameSize:(NSSize)size {
  self.bounds = {{0, 0}, size};
}
- (void)setNeedsDisplayInRect:(NSRect)rect {
  say("display part");
}
@end
@implementation NSControl
@end
@implementation NSButton
@end

@interface NSWindow () {
 @public
  BOOL _isShown;
  NSRect _place;
}
@end
@implementation NSWindow
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
  say("window style " + std::to_string(style) + " backing " + std::to_string(backing) + " defer " +
      std::to_string(defer));
  _place = rect;
  self.opaque = YES;
  self.hasShadow = YES;
  fake::system().windows.push_back(self);
  return self;
}
- (BOOL)isVisible {
  return _isShown;
}
- (CGFloat)backingScaleFactor {
  return fake::kScale;
}
- (NSRect)frame {
  return _place;
}
- (void)setFrame:(NSRect)frame display:(BOOL)display {
  fake::move(self, frame);
  say("frame " + std::to_string((int)frame.origin.x) + (display ? " display" : ""));
}
- (void)setFrameOrigin:(NSPoint)origin {
  _place.origin = origin;
}
- (void)orderFrontRegardless {
  _isShown = YES;
  say("front");
  [self.contentView drawRect:((NSView*)self.contentView).bounds];
}
- (void)orderOut:(id)sender {
  _isShown = NO;
  say("out");
}
@end

@interface NSEvent () {
 @public
  NSEventType _type;
  NSWindow* _window;
  BOOL _isRepeat;
}
@end
@implementation NSEvent
+ (NSUInteger)pressedMouseButtons {
  return fake::system().heldButtons;
}
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                   handler:(NSEvent* (^)(NSEvent*))handler {
  say("monitor " + std::to_string(mask));
  fake::system().monitor = [handler](NSEvent* event) { return handler(event); };
  return @"the monitor";
}
+ (void)removeMonitor:(id)monitor {
  fake::system().monitor = nullptr;
}
- (NSEventType)type {
  return _type;
}
- (NSWindow*)window {
  return _window;
}
- (BOOL)isARepeat {
  if (_type != NSEventTypeKeyDown && _type != NSEventTypeKeyUp) say("wrong question");
  return _isRepeat;
}
@end

extern "C" bool CGEventSourceKeyState(CGEventSourceStateID, CGKeyCode key) {
  return fake::system().heldKeys.count(key) != 0;
}

namespace fake {
bool lets(NSEventType type, NSWindow* window, bool isRepeat) {
  if (!system().monitor) return true;
  NSEvent* event = [[NSEvent alloc] init];
  event->_type = type;
  event->_window = window;
  event->_isRepeat = isRepeat;
  return system().monitor(event) == event;
}
}  // namespace fake

@interface NSScreen () {
 @public
  CGRect _place;
}
@end
@implementation NSScreen
+ (NSArray<NSScreen*>*)screens {
  NSMutableArray* screens = [NSMutableArray array];
  for (const CGRect& place : fake::system().screens) {
    NSScreen* screen = [[NSScreen alloc] init];
    screen->_place = place;
    [screens addObject:screen];
  }
  return screens;
}
+ (NSScreen*)mainScreen {
  for (NSScreen* screen in [NSScreen screens]) return screen;
  return nil;
}
- (NSRect)frame {
  return _place;
}
- (CGFloat)backingScaleFactor {
  return fake::kScale;
}
@end

@implementation NSMenu
- (void)addItem:(NSMenuItem*)item {
  fake::system().items.push_back(item);
}
- (void)removeAllItems {
  fake::system().items.clear();
}
@end

@interface NSMenuItem () {
 @public
  std::string _title;
  SEL _action;
  BOOL _isSeparator;
}
@end
@implementation NSMenuItem
+ (instancetype)separatorItem {
  NSMenuItem* item = [[NSMenuItem alloc] init];
  item->_isSeparator = YES;
  return item;
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
  _title = fake::text(title) + (key.length > 0 ? " (key)" : "");
  _action = action;
  return self;
}
@end

@implementation NSStatusBarButton
@end
@interface NSStatusItem () {
 @public
  NSStatusBarButton* _shown;
}
@end
@implementation NSStatusItem
- (NSStatusBarButton*)button {
  if (_shown == nil) _shown = [[NSStatusBarButton alloc] init];
  return _shown;
}
@end
@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
  return [[NSStatusBar alloc] init];
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  say("status item " + std::to_string((int)length));
  fake::system().statusItem = [[NSStatusItem alloc] init];
  return fake::system().statusItem;
}
- (void)removeStatusItem:(NSStatusItem*)item {
  say("status item removed");
}
@end

@interface NSAlert () {
  std::vector<std::string> _buttons;
  NSWindow* _panel;
}
@end
@implementation NSAlert
- (NSWindow*)window {
  if (_panel == nil) _panel = [[NSWindow alloc] init];
  return _panel;
}
- (void)layout {
  [self window]->_place.size = {200, 100};
}
- (NSButton*)addButtonWithTitle:(NSString*)title {
  _buttons.push_back(fake::text(title));
  return [[NSButton alloc] init];
}
- (NSModalResponse)runModal {
  const fake::Alert alert{fake::text(self.messageText), fake::text(self.informativeText), _buttons,
                          self.alertStyle, self.window};
  say("alert " + alert.message);
  self.window.level = 8;  // as the system's modal windows have it
  self.window->_place.origin = {60, 70};
  self.window->_isShown = YES;
  return fake::system().onAlert(alert);
}
@end

namespace fake {
extern "C" id objc_msgSend(id, SEL, ...);
void choose(NSMenuItem* item) {
  ((void (*)(id, SEL, id))objc_msgSend)(item.target, item->_action, item);
}
std::string title(NSMenuItem* item) { return item->_title; }
bool isSeparator(NSMenuItem* item) { return item->_isSeparator; }
void move(NSWindow* window, CGRect place) {
  window->_place = place;
  [(NSView*)window.contentView setFrameSize:place.size];
}
}  // namespace fake

// What a status item's button shows, in words.
std::string shownBy(NSStatusItem* item) {
  NSImage* image = item.button.image;
  return image->_name + (image->_isTemplate ? ", template" : "") +
         (item.button.appearsDisabled ? ", dimmed" : "") + ", " + fake::text(item.button.toolTip);
}
