#include "platform/mac/mac_alerts.h"

#import <AppKit/AppKit.h>

#include "platform/mac/mac_text.h"

namespace torvane {

static_assert(kAlertFirstButton == NSAlertFirstButtonReturn);
static_assert(static_cast<int>(AlertContent::Style::warning) == NSAlertStyleWarning);
static_assert(static_cast<int>(AlertContent::Style::informational) == NSAlertStyleInformational);

int MacAlerts::runModal(const AlertContent& content) {
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = toNSString(content.message);
  alert.informativeText = toNSString(content.informativeText);
  alert.alertStyle = static_cast<NSAlertStyle>(content.style);
  for (const auto& button : content.buttons) [alert addButtonWithTitle:toNSString(button)];

  const auto answer = static_cast<int>([alert runModal]);
  const int last = kAlertFirstButton + static_cast<int>(content.buttons.size()) - 1;
  return answer >= kAlertFirstButton && answer < last ? answer : last;
}

}  // namespace torvane
