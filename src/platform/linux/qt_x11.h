#pragma once

#include <QWindow>

namespace torvane {

// What Qt does not ask of the X server, over Qt's own connection. Where there is no X server, as in
// a test, nothing happens and nothing is held.

// Whether a key or a mouse button is held now, whichever window has the keyboard. All input from
// before has been sent to this program's windows by then.
[[nodiscard]] bool isInputHeld();

// Has the window manager bring a window that has been shown in front and give it the keyboard, as a
// task bar does: what a program asks for itself it is denied while the user works in another one.
void bringToFrontRegardless(const QWindow& window);

}  // namespace torvane
