#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace torvane {

// What the status item shows; a value computed from the delegate's state (status_icon.h).
struct StatusIcon {
  std::string symbolName;                // a system symbol's name
  std::string accessibilityDescription;  // what a screen reader says for the picture
  std::string toolTip;
  bool appearsDisabled = false;  // dimmed

  bool operator==(const StatusIcon&) const = default;
};

struct MenuItem {
  std::string title;             // plain text; '&' and '_' are themselves
  std::function<void()> action;  // empty: informational, shown disabled
  int indentationLevel = 0;
  bool isSeparator = false;
  bool isChecked = false;
};

class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;

  // The menu's items from first to last, asked for each time the menu is about to open.
  virtual std::vector<MenuItem> menuNeedsUpdate() = 0;
};

// One icon with a menu in the desktop's status area. Main thread only.
class StatusItem {
 public:
  virtual ~StatusItem() = default;

  virtual void setIcon(const StatusIcon& icon) = 0;

  // The delegate outlives the item.
  virtual void setMenu(MenuDelegate& delegate) = 0;
};

class StatusBar {
 public:
  virtual ~StatusBar() = default;

  // A new item with an empty menu and no icon; null when the desktop has no place for one.
  [[nodiscard]] virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace torvane
