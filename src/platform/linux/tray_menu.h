#pragma once

#include <QMenu>
#include <functional>
#include <vector>

#include "ports/status_item.h"

namespace torvane {

// A QMenu filled from a MenuDelegate each time it is about to open.
//
// An action runs from the event loop, not from within the choice: a panel that chose it over
// D-Bus would otherwise wait for its answer until an alert that the action opens is closed.
//
// A panel may have read the menu before it changes and choose from it afterwards. So an entry is
// what it says: while the menu has one of the same text and kind, it stays the same QAction and
// keeps its number on D-Bus. The number of one that has gone stands for nothing ever after.
class TrayMenu {
 public:
  TrayMenu();

  [[nodiscard]] QMenu& menu() { return menu_; }

  // The delegate outlives this object.
  void setDelegate(MenuDelegate& delegate) { delegate_ = &delegate; }

  // Makes the menu what it should be now. To be called when something it shows may have changed,
  // too: a panel lays out a menu before it says that the menu opens.
  void update();

 private:
  struct Entry {
    MenuItem item;
    int repetition = 0;  // how many before it are just like it
    QAction* action = nullptr;
  };

  [[nodiscard]] bool isExported();  // drawn by the panel rather than by Qt
  [[nodiscard]] std::vector<MenuItem> prepareToDraw(std::vector<MenuItem> items);
  [[nodiscard]] static bool areTheSame(const Entry& a, const Entry& b);
  [[nodiscard]] static std::vector<Entry> entriesFor(std::vector<MenuItem> items);
  [[nodiscard]] QAction* takeOver(const Entry& entry);
  void place(QAction* action, qsizetype position);
  [[nodiscard]] QAction* makeAction();
  void show(const Entry& entry);
  void choose(const QAction* action);

  MenuDelegate* delegate_ = nullptr;
  std::vector<Entry> entries_;  // as the menu's actions, in their order
  QMenu menu_;
};

}  // namespace torvane
