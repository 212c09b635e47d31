#include "platform/mac/mac_alerts.h"

#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>

#include <optional>

#include "platform/mac/mac_answer_guard.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

static_assert(kAlertFirstButton == NSAlertFirstButtonReturn);
static_assert(static_cast<int>(AlertContent::Style::warning) == NSAlertStyleWarning);
static_assert(static_cast<int>(AlertContent::Style::informational) == NSAlertStyleInformational);

constexpr NSWindowLevel kAboveTheInk = NSScreenSaverWindowLevel + 1;

NSAlert* makeAlert(const AlertContent& content) {
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = toNSString(content.message);
  alert.informativeText = toNSString(content.informativeText);
  alert.alertStyle = static_cast<NSAlertStyle>(content.style);
  for (const auto& button : content.buttons) [alert addButtonWithTitle:toNSString(button)];
  return alert;
}

// In the middle of the screen, if one is given. Over full-screen windows, too, which have spaces of
// their own.
void place(NSWindow* window, const std::optional<Rect>& screen) {
  window.level = kAboveTheInk;
  window.collectionBehavior =
      NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary;
  if (!screen) return;
  const CGSize size = window.frame.size;
  [window setFrameOrigin:{screen->x + (screen->width - size.width) / 2,
                          screen->y + (screen->height - size.height) / 2}];
}

// Also once its loop has begun: as it opens, the system gives an alert a level and a place.
void keepInPlace(NSAlert* alert, const std::optional<Rect>& screen) {
  NSWindow* window = alert.window;
  const std::optional<Rect> wanted = screen;
  [alert layout];
  place(window, wanted);
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    place(window, wanted);
  });
}

}  // namespace

int MacAlerts::runModal(const AlertContent& content) {
  NSAlert* alert = makeAlert(content);
  keepInPlace(alert, content.screen);
  std::optional<MacAnswerGuard> guard;
  if (content.isGuarded) guard.emplace(alert.window);

  const auto answer = static_cast<int>([alert runModal]);
  const int last = kAlertFirstButton + static_cast<int>(content.buttons.size()) - 1;
  return answer >= kAlertFirstButton && answer < last ? answer : last;
}

}  // namespace torvane
