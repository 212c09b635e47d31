#pragma once

#include <QString>
#include <string>

namespace torvane {

[[nodiscard]] inline QString qtText(const std::string& text) {
  return QString::fromStdString(text);
}

// A label for a button or a menu item drawn by Qt, where a single '&' marks a key.
[[nodiscard]] inline QString qtLabel(const std::string& text) {
  return qtText(text).replace('&', "&&");
}

// A label for a menu item that Qt exports over D-Bus. There '_' marks a key and two of them stand
// for one; Qt itself turns the first '&' of a label into the mark. So a text with an '&' gets one
// more in front, which becomes the mark of its first character.
[[nodiscard]] QString exportedLabel(const std::string& text);

// A tooltip that nothing takes for rich text.
[[nodiscard]] QString plainToolTip(const std::string& text);

}  // namespace torvane
