#include "platform/linux/qt_text.h"

namespace torvane {

QString exportedLabel(const std::string& text) {
  QString label = qtText(text).replace('_', "__");
  if (label.contains('&')) label.prepend('&');
  return label;
}

QString plainToolTip(const std::string& text) {
  // Word joiners, which nobody sees, keep "<b>" from being a tag and "&lt;" from being an entity.
  constexpr QChar kWordJoiner(0x2060);
  QString toolTip = qtText(text);
  for (const QChar mark : {QChar('<'), QChar('&')}) {
    toolTip.replace(mark, QString(mark) + kWordJoiner);
  }
  return toolTip;
}

}  // namespace torvane
