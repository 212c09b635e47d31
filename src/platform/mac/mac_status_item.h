#pragma once

#import <AppKit/AppKit.h>

#include "ports/status_item.h"

// Fills the menu each time it is about to open, and carries out what is chosen.
@interface TorvaneStatusMenu : NSObject <NSMenuDelegate>
// `delegate` outlives this object.
- (instancetype)initWithDelegate:(torvane::MenuDelegate*)delegate;
- (void)performItem:(NSMenuItem*)sender;
@end

namespace torvane {

class MacStatusItem final : public StatusItem {
 public:
  MacStatusItem();
  ~MacStatusItem() override;
  MacStatusItem(const MacStatusItem&) = delete;
  MacStatusItem& operator=(const MacStatusItem&) = delete;

  void setIcon(const StatusIcon& icon) override;
  void setMenu(MenuDelegate& delegate) override;

 private:
  NSStatusItem* item_;
  TorvaneStatusMenu* menu_ = nil;  // the menu itself does not keep it
};

class MacStatusBar final : public StatusBar {
 public:
  [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem() override {
    return std::make_unique<MacStatusItem>();
  }
};

}  // namespace torvane
