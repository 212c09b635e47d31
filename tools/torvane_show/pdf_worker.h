#pragma once

#include <QImage>
#include <QThread>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "torvane_show/deck.h"
#include "torvane_show/pdf_pages.h"
#include "torvane_show/wishes.h"

namespace torvane::show {

// The thread that alone touches the PDF. It never ends: a page may take for ever, so the process
// ends without it. Each list of wishes replaces the one before, so that nothing is drawn any more
// for a page that was left. Its signals arrive on the receiver's thread.
class PdfWorker : public QThread {
  Q_OBJECT

 public:
  explicit PdfWorker(const QString& file) : file_(file) {}

  // While a page is shown. `room` is what a sharp picture has to fit into, in pixels.
  void wish(int page, std::vector<Wish> wishes, QSize room);

  // A picture file `width` pixels wide; empty when too many are wanted or it cannot be made.
  // `done` is called on the worker's thread.
  void picture(int page, int width, std::function<void(QByteArray)> done);

 Q_SIGNALS:
  void opened(const torvane::show::Deck& deck);
  void failed(const QString& sentence);
  void drawn(torvane::show::Wish wish, QSize room, const QImage& image, qint64 milliseconds);

 protected:
  void run() override;

 private:
  struct Picture {
    int page;
    int width;
    std::function<void(QByteArray)> done;
  };

  void serve();
  [[nodiscard]] Wish takeWish();
  [[nodiscard]] Picture takePicture();

  QString file_;
  PdfPages pages_;  // of this thread, once it runs
  std::mutex mutex_;
  std::condition_variable wanted_;
  int page_ = 0;
  std::vector<Wish> wishes_;
  QSize room_;
  std::deque<Picture> pictures_;
};

}  // namespace torvane::show
