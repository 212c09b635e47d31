#include "platform/linux/ink_shape.h"

#include <utility>

namespace torvane {
namespace {

constexpr int kHalf = 128;  // of 255

}  // namespace

void InkShape::setSize(const QSize& size) {
  if (size == bits_.size()) return;
  bits_ = QImage(size, QImage::Format_MonoLSB);
  bits_.fill(0);
  change_ = Change{bits_.rect(), true};
}

void InkShape::replacePart(const QPoint& at, const QImage& pixels) {
  const QRect part = QRect(at, pixels.size()) & bits_.rect();
  Change change{{}, change_ && change_->takesAway};
  for (int y = part.top(); y <= part.bottom(); ++y) {
    const auto* painted = reinterpret_cast<const QRgb*>(pixels.constScanLine(y - at.y())) - at.x();
    uchar* row = bits_.scanLine(y);
    int first = -1, last = -1;
    for (int x = part.left(); x <= part.right(); ++x) {
      const auto bit = static_cast<uchar>(1U << (x % 8));
      const bool wasInk = (row[x / 8] & bit) != 0, isInk = qAlpha(painted[x]) >= kHalf;
      if (wasInk == isInk) continue;
      row[x / 8] ^= bit;
      change.takesAway |= wasInk;
      if (first < 0) first = x;
      last = x;
    }
    if (first >= 0) change.where |= QRect(first, y, last - first + 1, 1);
  }
  if (change.where.isEmpty()) return;
  if (change_) change.where |= change_->where;
  change_ = change;
}

std::optional<InkShape::Change> InkShape::takeChange() {
  return std::exchange(change_, std::nullopt);
}

}  // namespace torvane
