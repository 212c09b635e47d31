#pragma once

#include <QFontMetrics>
#include <QPalette>
#include <vector>

#include "ports/status_item.h"

namespace torvane {

// For menus that Qt draws.

// Informational lines wider than `width` pixels as several, which make up the same text.
[[nodiscard]] std::vector<MenuItem> inLinesThatFit(std::vector<MenuItem> items,
                                                   const QFontMetrics& metrics, int width);

// The palette with a colour for disabled texts that can be read: most of this menu's lines are
// information rather than commands that cannot be chosen just now.
[[nodiscard]] QPalette withReadableInformation(QPalette palette);

}  // namespace torvane
