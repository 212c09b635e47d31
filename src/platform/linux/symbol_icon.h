#pragma once

#include <QIcon>
#include <QPalette>
#include <string>

namespace torvane {

// The system symbol of this name, drawn in the palette's text colour with a thin rim in its
// background colour, so that it can be made out on a panel of either kind; crossed out and somewhat
// faint when `isDimmed`. A null icon for an unknown name.
[[nodiscard]] QIcon symbolIcon(const std::string& symbolName, const QPalette& palette,
                               bool isDimmed);

}  // namespace torvane
