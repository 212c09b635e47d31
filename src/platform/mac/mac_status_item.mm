#include "platform/mac/mac_status_item.h"

#include "platform/mac/edge.h"
#include "platform/mac/mac_text.h"

@interface TorvaneStatusMenu ()
- (NSMenuItem*)itemAt:(std::size_t)index;
@end

@implementation TorvaneStatusMenu {
  torvane::MenuDelegate* _delegate;
  std::vector<torvane::MenuItem> _items;
}

- (instancetype)initWithDelegate:(torvane::MenuDelegate*)delegate {
  self = [super init];
  if (self != nil) _delegate = delegate;
  return self;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
  torvane::atEdge([&] {
    [menu removeAllItems];
    _items = _delegate->menuNeedsUpdate();
    for (std::size_t i = 0; i < _items.size(); ++i) [menu addItem:[self itemAt:i]];
  });
}

- (NSMenuItem*)itemAt:(std::size_t)index {
  const torvane::MenuItem& item = _items[index];
  if (item.isSeparator) return [NSMenuItem separatorItem];
  const BOOL isEnabled = item.action != nullptr;
  NSMenuItem* menuItem = [[NSMenuItem alloc] initWithTitle:torvane::toNSString(item.title)
                                                    action:isEnabled ? @selector(performItem:) : nil
                                             keyEquivalent:@""];
  menuItem.target = isEnabled ? self : nil;
  menuItem.tag = static_cast<NSInteger>(index);
  menuItem.enabled = isEnabled;
  menuItem.indentationLevel = item.indentationLevel;
  menuItem.state = item.isChecked ? NSControlStateValueOn : NSControlStateValueOff;
  return menuItem;
}

- (void)performItem:(NSMenuItem*)sender {
  torvane::atEdge([&] {
    // A copy: while the action shows an alert, the menu may open and fill itself anew.
    const auto action = _items.at(static_cast<std::size_t>(sender.tag)).action;
    action();
  });
}

@end

namespace torvane {

MacStatusItem::MacStatusItem()
    : item_([[NSStatusBar systemStatusBar] statusItemWithLength:NSVariableStatusItemLength]) {}

MacStatusItem::~MacStatusItem() { [[NSStatusBar systemStatusBar] removeStatusItem:item_]; }

void MacStatusItem::setIcon(const StatusIcon& icon) {
  NSImage* image = [NSImage imageWithSystemSymbolName:toNSString(icon.symbolName)
                             accessibilityDescription:toNSString(icon.accessibilityDescription)];
  [image setTemplate:YES];  // follows the menu bar's light or dark look
  item_.button.image = image;
  item_.button.appearsDisabled = icon.appearsDisabled;
  item_.button.toolTip = toNSString(icon.toolTip);
}

void MacStatusItem::setMenu(MenuDelegate& delegate) {
  menu_ = [[TorvaneStatusMenu alloc] initWithDelegate:&delegate];
  NSMenu* menu = [[NSMenu alloc] init];
  menu.autoenablesItems = NO;
  menu.delegate = menu_;
  item_.menu = menu;
}

}  // namespace torvane
