#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

namespace torvane {

// Which pixels of a window are ink, half or more, and how that has changed. An X server takes long
// for each change of a shape with many corners, however small it is, so it is told of one at a time
// and of none that is none.
class InkShape {
 public:
  struct Change {
    QRect where;
    bool takesAway = false;  // else it only adds
  };

  // In pixels. Another size than before begins without ink.
  void setSize(const QSize& size);

  // What a part was painted with, from this pixel on: premultiplied colours.
  void replacePart(const QPoint& at, const QImage& pixels);

  // A bit for each pixel: Format_MonoLSB.
  [[nodiscard]] const QImage& bits() const { return bits_; }

  // What has changed since this was last asked; none when nothing has.
  [[nodiscard]] std::optional<Change> takeChange();

 private:
  QImage bits_;
  std::optional<Change> change_;
};

}  // namespace torvane
