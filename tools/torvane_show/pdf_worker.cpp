#include "torvane_show/pdf_worker.h"

#include <QElapsedTimer>

namespace torvane::show {
namespace {

constexpr std::size_t kMostPictures = 32;  // that wait
constexpr QSize kSmallRoom(480, 480);
constexpr int kTallest = 16384;  // pixels

}  // namespace

void PdfWorker::wish(int page, std::vector<Wish> wishes, QSize room) {
  {
    const std::lock_guard lock(mutex_);
    page_ = page;
    wishes_ = std::move(wishes);
    room_ = room;
  }
  wanted_.notify_one();
}

void PdfWorker::picture(int page, int width, std::function<void(QByteArray)> done) {
  {
    const std::lock_guard lock(mutex_);
    if (pictures_.size() >= kMostPictures) return done({});
    pictures_.push_back({page, width, std::move(done)});
  }
  wanted_.notify_one();
}

void PdfWorker::run() {
  const QString problem = pages_.open(file_);
  if (!problem.isEmpty()) {
    Q_EMIT failed(problem);
    return;
  }
  Q_EMIT opened(pages_.deck());
  while (true) serve();
}

// What the audience waits for, else a picture for a remote, else what the audience may see next.
void PdfWorker::serve() {
  std::unique_lock lock(mutex_);
  wanted_.wait(lock, [this] { return !wishes_.empty() || !pictures_.empty(); });
  const bool isAwaited = !wishes_.empty() && wishes_.front().page == page_;
  if (!isAwaited && !pictures_.empty()) {
    const Picture picture = takePicture();
    lock.unlock();
    picture.done(pictureFile(pages_.image(picture.page, {picture.width, kTallest})));
    return;
  }
  const Wish wish = takeWish();
  const QSize room = room_;
  lock.unlock();
  QElapsedTimer timer;
  timer.start();
  const QImage image = pages_.image(wish.page, wish.isSharp ? room : kSmallRoom);
  Q_EMIT drawn(wish, room, image, timer.elapsed());
}

Wish PdfWorker::takeWish() {
  const Wish wish = wishes_.front();
  wishes_.erase(wishes_.begin());
  return wish;
}

PdfWorker::Picture PdfWorker::takePicture() {
  Picture picture = std::move(pictures_.front());
  pictures_.pop_front();
  return picture;
}

}  // namespace torvane::show
