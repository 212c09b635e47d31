#pragma once

#include <QCache>
#include <QImage>
#include <QSet>
#include <QWidget>
#include <optional>

#include "torvane_show/deck.h"
#include "torvane_show/pdf_worker.h"
#include "torvane_show/position.h"

namespace torvane::show {

// The full-screen show: black around the page, no pointer. Closing it ends the show.
class ShowWindow : public QWidget {
  Q_OBJECT

 public:
  ShowWindow(const Deck& deck, PdfWorker& worker);

  void showOn(QScreen* screen);

  void go(const Position& to);
  [[nodiscard]] const Position& wanted() const { return wanted_; }

  // What the audience sees. None before the first page was painted.
  [[nodiscard]] const std::optional<Position>& painted() const { return painted_; }

 Q_SIGNALS:
  void positionPainted();
  void closed();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void keep(const Wish& wish, QSize room, const QImage& image, qint64 milliseconds);
  void wish();
  [[nodiscard]] QSize room() const;
  [[nodiscard]] const QImage* image(int page) const;
  void paintPage(QPainter& painter, const QImage& image);
  void paintEnd(QPainter& painter);

  const Deck& deck_;
  PdfWorker& worker_;
  Position wanted_;
  std::optional<Position> painted_;
  QCache<int, QImage> sharp_;
  QCache<int, QImage> small_;
  QSet<int> hard_;  // pages that take long: drawn sharp only when they are shown
};

}  // namespace torvane::show
