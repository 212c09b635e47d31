#pragma once

#include <QImage>
#include <QPdfDocument>
#include <QSize>
#include <QString>

#include "torvane_show/deck.h"

namespace torvane::show {

// The pages of a PDF. Belongs to one thread, and may take seconds for each call: all work on PDFs
// in a process waits for one lock.
class PdfPages {
 public:
  // Opens it; empty, or a sentence for the user that says why it cannot be shown.
  [[nodiscard]] QString open(const QString& file);

  // What there is to know of it, with the notes that lie beside the file. Once it is open.
  [[nodiscard]] Deck deck();

  // As large as fits into the room (pixels), without transparent parts; white when the page cannot
  // be drawn.
  [[nodiscard]] QImage image(int page, QSize room);

 private:
  void readTitles(Deck& deck);

  QPdfDocument document_;
  QString file_;
};

// A PNG, or a JPEG of what would be a large one.
[[nodiscard]] QByteArray pictureFile(const QImage& image);

}  // namespace torvane::show
