#pragma once

#include <QMenu>
#include <functional>
#include <vector>

#include "app/status_item.h"

namespace torvane {

// A QMenu filled from a MenuDelegate each time it is about to open.
//
// An action runs from the event loop, not from within the choice: a panel that chose it over
// D-Bus would otherwise wait for its answer until an alert that the action opens is closed.
class TrayMenu {
 public:
  TrayMenu();

  [[nodiscard]] QMenu& menu() { return menu_; }

  // The delegate outlives this object.
  void setDelegate(MenuDelegate& delegate) { delegate_ = &delegate; }

  // Fills the menu unless it would stay as it is. To be called when something it shows may have
  // changed, too: a panel lays out a menu before it says that the menu opens.
  void update();

 private:
  [[nodiscard]] bool isExported();  // drawn by the panel rather than by Qt
  void fill();
  void addItem(std::size_t index);

  MenuDelegate* delegate_ = nullptr;
  std::vector<MenuItem> items_;  // one for each action of the menu
  bool labelsAreExported_ = false;
  QMenu menu_;
};

}  // namespace torvane
