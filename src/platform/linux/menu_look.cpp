#include "platform/linux/menu_look.h"

#include <QTextLayout>
#include <QTextOption>
#include <utility>

#include "platform/linux/qt_text.h"

namespace torvane {
namespace {

int mixed(int colour, int background) {
  constexpr int kPercent = 70;
  return (colour * kPercent + background * (100 - kPercent)) / 100;
}

std::vector<QString> linesOf(const QString& text, const QFontMetrics& metrics, int width) {
  if (metrics.horizontalAdvance(text) <= width) return {text};
  std::vector<QString> lines;
  QTextLayout layout(text);
  QTextOption wrapping;
  wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(wrapping);
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    lines.push_back(text.mid(line.textStart(), line.textLength()));
  }
  layout.endLayout();
  return lines;
}

}  // namespace

std::vector<MenuItem> inLinesThatFit(std::vector<MenuItem> items, const QFontMetrics& metrics,
                                     int width) {
  std::vector<MenuItem> fitting;
  for (MenuItem& item : items) {
    if (item.action || item.isSeparator) {
      fitting.push_back(std::move(item));
      continue;
    }
    for (const QString& line : linesOf(qtText(item.title), metrics, width)) {
      MenuItem piece = item;
      piece.title = line.toStdString();
      fitting.push_back(std::move(piece));
    }
  }
  return fitting;
}

QPalette withReadableInformation(QPalette palette) {
  const QColor text = palette.color(QPalette::Active, QPalette::Text);
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  const QColor readable(mixed(text.red(), base.red()), mixed(text.green(), base.green()),
                        mixed(text.blue(), base.blue()));
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, readable);
  }
  return palette;
}

}  // namespace torvane
