#pragma once

#include <QSize>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/linux/qt_canvas.h"
#include "ports/picture_decoder.h"

namespace torvane {

// Decodes one picture at a time on a thread of its own.
class QtPictureDecoder final : public PictureDecoder {
 public:
  // `largest` tells the size of the largest screen, in pixels, whenever a picture is to be decoded.
  explicit QtPictureDecoder(std::function<QSize()> largest);
  ~QtPictureDecoder() override;
  QtPictureDecoder(const QtPictureDecoder&) = delete;
  QtPictureDecoder& operator=(const QtPictureDecoder&) = delete;

  void decode(Bytes data, std::function<void(std::shared_ptr<const Picture>)> done) override;

 private:
  struct Job {
    Bytes data;
    QSize largest;
    std::function<void(std::shared_ptr<const Picture>)> done;
  };

  void run();
  [[nodiscard]] std::optional<Job> next();

  const std::function<QSize()> largest_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  bool isEnding_ = false;
  std::thread thread_;
};

// The picture in `data`; a null image when there is none that may be shown.
[[nodiscard]] QImage decodedPicture(const Bytes& data, QSize largest);

// The largest screen now, in pixels.
[[nodiscard]] QSize largestScreen();

}  // namespace torvane
