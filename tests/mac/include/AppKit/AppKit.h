#pragma once

#include <Foundation/Foundation.h>

@class NSApplication, NSMenu, NSMenuItem, NSView, NSWindow;

_Pragma("clang assume_nonnull begin")

    @interface NSResponder : NSObject
@end

// The application

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyAccessory = 1
};

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;
- (void)run;
- (void)terminate:(nullable id)sender;
@end

extern "C" __kindof NSApplication* NSApp;

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end

@interface NSRunningApplication : NSObject
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:
    (NSString*)bundleIdentifier;
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(int)pid;
@property(readonly) int processIdentifier;
@property(nullable, readonly, copy) NSURL* bundleURL;
- (BOOL)forceTerminate;
@end

// Colours and pictures

@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* clearColor;
@property(class, readonly, strong) NSColor* systemRedColor;
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha;
@property(readonly) CGColorRef CGColor NS_RETURNS_INNER_POINTER;
@end

@interface NSImage : NSObject
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)symbolName
                          accessibilityDescription:(nullable NSString*)description;
// A property by the name of "template", which is a word of C++.
- (void)setTemplate:(BOOL)isTemplate;
@end

@interface NSGraphicsContext : NSObject
@property(class, nullable, strong) NSGraphicsContext* currentContext;
@property(readonly) CGContextRef CGContext NS_RETURNS_INNER_POINTER;
@end

// Views and windows

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frameRect;
- (void)setFrameSize:(NSSize)newSize;
- (void)drawRect:(NSRect)dirtyRect;
@property(readonly, getter=isFlipped) BOOL flipped;
@property(readonly, getter=isOpaque) BOOL opaque;
@property NSRect bounds;
@property(nullable, readonly, assign) NSWindow* window;
@property(nullable, copy) NSString* toolTip;
@property BOOL needsDisplay;
- (void)setNeedsDisplayInRect:(NSRect)invalidRect;
@end

@interface NSControl : NSView
@end

@interface NSButton : NSControl
@property(nullable, strong) NSImage* image;
@end

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) { NSWindowStyleMaskBorderless = 0 };
typedef NS_OPTIONS(NSUInteger, NSWindowCollectionBehavior) {
  NSWindowCollectionBehaviorCanJoinAllSpaces = 1 << 0,
  NSWindowCollectionBehaviorStationary = 1 << 4,
  NSWindowCollectionBehaviorIgnoresCycle = 1 << 6,
  NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8
};
typedef NS_ENUM(NSUInteger, NSBackingStoreType) { NSBackingStoreBuffered = 2 };
typedef NSInteger NSWindowLevel;
static const NSWindowLevel NSScreenSaverWindowLevel = 1000;

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
@property(getter=isOpaque) BOOL opaque;
@property(null_resettable, copy) NSColor* backgroundColor;
@property BOOL hasShadow;
@property BOOL ignoresMouseEvents;
@property NSWindowLevel level;
@property NSWindowCollectionBehavior collectionBehavior;
@property(nullable, strong) __kindof NSView* contentView;
@property(readonly) NSRect frame;
@property(readonly, getter=isVisible) BOOL visible;
@property(readonly) CGFloat backingScaleFactor;
- (void)setFrame:(NSRect)frameRect display:(BOOL)flag;
- (void)setFrameOrigin:(NSPoint)point;
- (void)orderFrontRegardless;
- (void)orderOut:(nullable id)sender;
@end

typedef NS_ENUM(NSUInteger, NSEventType) { NSEventTypeKeyDown = 10, NSEventTypeKeyUp = 11 };
typedef NS_OPTIONS(unsigned long long, NSEventMask) {
  NSEventMaskLeftMouseDown = 1 << 1,
  NSEventMaskLeftMouseUp = 1 << 2,
  NSEventMaskRightMouseDown = 1 << 3,
  NSEventMaskRightMouseUp = 1 << 4,
  NSEventMaskKeyDown = 1 << 10,
  NSEventMaskKeyUp = 1 << 11,
  NSEventMaskOtherMouseDown = 1 << 25,
  NSEventMaskOtherMouseUp = 1 << 26
};

@interface NSEvent : NSObject
@property(class, readonly) NSUInteger pressedMouseButtons;
@property(readonly) NSEventType type;
@property(nullable, readonly, weak) NSWindow* window;
@property(readonly, getter=isARepeat) BOOL ARepeat;
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent* _Nullable (^)(NSEvent* event))block;
+ (void)removeMonitor:(id)eventMonitor;
@end

@interface NSScreen : NSObject
@property(class, readonly, copy) NSArray<NSScreen*>* screens;
@property(class, nullable, readonly, strong) NSScreen* mainScreen;
@property(readonly) NSRect frame;
@property(readonly) CGFloat backingScaleFactor;
@end

// The menu

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu*)menu;
@end

@interface NSMenu : NSObject
@property(nullable, weak) id<NSMenuDelegate> delegate;
@property BOOL autoenablesItems;
- (void)addItem:(NSMenuItem*)newItem;
- (void)removeAllItems;
@end

@interface NSMenuItem : NSObject
+ (instancetype)separatorItem;
- (instancetype)initWithTitle:(NSString*)string
                       action:(nullable SEL)selector
                keyEquivalent:(NSString*)charCode;
@property(nullable, weak) id target;
@property NSInteger tag;
@property(getter=isEnabled) BOOL enabled;
@property NSInteger indentationLevel;
@property NSControlStateValue state;
@end

// The status item

static const CGFloat NSVariableStatusItemLength = -1.0;

@interface NSStatusBarButton : NSButton
@property BOOL appearsDisabled;
@end

@interface NSStatusItem : NSObject
@property(nullable, readonly, strong) NSStatusBarButton* button;
@property(nullable, strong) NSMenu* menu;
@end

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

// Alerts

typedef NS_ENUM(NSUInteger, NSAlertStyle) {
  NSAlertStyleWarning = 0,
  NSAlertStyleInformational = 1
};
typedef NSInteger NSModalResponse;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;

@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property NSAlertStyle alertStyle;
@property(readonly, strong) NSWindow* window;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (void)layout;
- (NSModalResponse)runModal;
@end

_Pragma("clang assume_nonnull end")
