#include "platform/linux/stand_in_window.h"

#include <QApplication>
#include <QHBoxLayout>
#include <initializer_list>

#include "platform/linux/qt_text.h"
#include "platform/linux/symbol_icon.h"

namespace torvane {
namespace {

// The program's name stands in the window's title.
QString withoutName(const StatusIcon& icon) {
  QString state = qtText(icon.toolTip);
  const QString name = qtText(icon.accessibilityDescription) + ": ";
  if (!state.startsWith(name)) return state;
  state.remove(0, name.size());
  if (!state.isEmpty()) state[0] = state[0].toUpper();
  return state;
}

}  // namespace

StandInWindow::StandInWindow() {
  constexpr int kTextWidth = 260;
  setWindowTitle("Torvane P2P Helper Menu");
  setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint);
  state_.setTextFormat(Qt::PlainText);
  state_.setWordWrap(true);
  state_.setFixedWidth(kTextWidth);
  button_.setMenu(&menu_.menu());

  auto* row = new QHBoxLayout(this);
  for (QWidget* part : std::initializer_list<QWidget*>{&picture_, &state_, &button_}) {
    row->addWidget(part);
  }
  row->setSizeConstraint(QLayout::SetFixedSize);
}

void StandInWindow::setIcon(const StatusIcon& icon) {
  constexpr int kSide = 32;
  picture_.setPixmap(
      symbolIcon(icon.symbolName, QApplication::palette(), icon.appearsDisabled).pixmap(kSide));
  state_.setText(withoutName(icon));
}

void StandInWindow::setMenu(MenuDelegate& delegate) {
  menu_.setDelegate(delegate);
}

void StandInWindow::showBehind() {
  setAttribute(Qt::WA_ShowWithoutActivating, true);
  show();
}

void StandInWindow::showInFront() {
  setAttribute(Qt::WA_ShowWithoutActivating, false);
  showNormal();
  raise();
  activateWindow();
  button_.setFocus();
}

}  // namespace torvane
