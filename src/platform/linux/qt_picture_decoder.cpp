#include "platform/linux/qt_picture_decoder.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageReader>
#include <QScreen>
#include <algorithm>
#include <array>
#include <utility>

namespace torvane {
namespace {

constexpr std::int64_t kMostPixels = 64'000'000;
constexpr int kMostMegabytes = 256;  // while one is decoded: four bytes a pixel
// Each waiting picture may be 32 MiB of file. Whoever sends more than this is not looking at them.
constexpr std::size_t kMostWaiting = 4;

bool isRasterFormat(const QByteArray& format) {
  static constexpr std::array kRaster = {"png",  "jpeg", "jpg", "gif",  "bmp", "webp",
                                         "tiff", "tif",  "ico", "icns", "tga"};
  return std::find(kRaster.begin(), kRaster.end(), format) != kRaster.end();
}

bool mayBeShown(const QImageReader& reader) {
  const QSize size = reader.size();
  return isRasterFormat(reader.format()) && size.isValid() && !size.isEmpty() &&
         std::int64_t{size.width()} * size.height() <= kMostPixels;
}

}  // namespace

QImage decodedPicture(const Bytes& data, QSize largest) {
  QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data.data()),
                                             static_cast<qsizetype>(data.size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  if (!mayBeShown(reader)) return {};
  const QSize size = reader.size();
  const QSize kept = size.scaled(largest, Qt::KeepAspectRatioByExpanding);
  if (kept.width() < size.width()) reader.setScaledSize(kept);
  return reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QSize largestScreen() {
  QSize largest(1, 1);
  for (const QScreen* screen : QGuiApplication::screens()) {
    largest = largest.expandedTo((screen->size() * screen->devicePixelRatio()));
  }
  return largest;
}

QtPictureDecoder::QtPictureDecoder(QSize largest) : largest_(largest), thread_([this] { run(); }) {
  QImageReader::setAllocationLimit(kMostMegabytes);
}

QtPictureDecoder::~QtPictureDecoder() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void QtPictureDecoder::decode(Bytes data,
                              std::function<void(std::shared_ptr<const Picture>)> done) {
  {
    const std::lock_guard lock(mutex_);
    // Too many: the oldest that still waits is given up. It is answered in its turn.
    if (waiting_.size() >= kMostWaiting) {
      const auto oldest = std::find_if(waiting_.begin(), waiting_.end(),
                                       [](const Job& job) { return !job.data.empty(); });
      if (oldest != waiting_.end()) oldest->data = {};
    }
    waiting_.push_back({std::move(data), std::move(done)});
  }
  changed_.notify_all();
}

std::optional<QtPictureDecoder::Job> QtPictureDecoder::next() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
  if (isEnding_) return std::nullopt;
  Job job = std::move(waiting_.front());
  waiting_.pop_front();
  return job;
}

void QtPictureDecoder::run() {
  while (auto job = next()) {
    QImage image = decodedPicture(job->data, largest_);
    job->data = {};
    job->done(image.isNull() ? nullptr : std::make_shared<QtPicture>(std::move(image)));
  }
}

}  // namespace torvane
