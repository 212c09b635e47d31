#include "platform/linux/qt_picture_decoder.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageReader>
#include <QScreen>
#include <QtEndian>
#include <array>
#include <utility>

namespace torvane {
namespace {

constexpr std::int64_t kMostPixels = 64'000'000;
constexpr int kMostMegabytes = 256;  // while one is decoded: four bytes a pixel

// The formats with pixels, told by how a file begins. Nothing else reaches a decoder.
const char* rasterFormat(const QByteArray& data) {
  struct Beginning {
    QByteArray bytes;
    const char* format;
  };
  static const std::array kBeginnings = {Beginning{QByteArray("\x89PNG\r\n\x1a\n", 8), "png"},
                                         Beginning{"\xff\xd8\xff", "jpeg"},
                                         Beginning{"GIF8", "gif"},
                                         Beginning{"BM", "bmp"},
                                         Beginning{QByteArray("II*\0", 4), "tiff"},
                                         Beginning{QByteArray("MM\0*", 4), "tiff"}};
  for (const auto& [bytes, format] : kBeginnings) {
    if (data.startsWith(bytes)) return format;
  }
  return data.startsWith("RIFF") && data.mid(8, 4) == "WEBP" ? "webp" : nullptr;
}

// The PNG library sets memory aside for a chunk of the size it claims, up to 2 GB, before it looks
// whether the file has as much.
bool hasWholeChunks(const QByteArray& png) {
  constexpr qsizetype kAround = 12;  // a chunk's length, name and checksum
  qsizetype at = 8;
  while (png.size() - at >= kAround) {
    const qsizetype room = png.size() - at - kAround;
    const auto length = static_cast<qsizetype>(qFromBigEndian<quint32>(png.constData() + at));
    if (length > room) return false;
    if (png.mid(at + 4, 4) == "IEND") return true;
    at += kAround + length;
  }
  return false;
}

bool isFewEnough(const QSize& size) {
  return !size.isEmpty() && std::int64_t{size.width()} * size.height() <= kMostPixels;
}

}  // namespace

QImage decodedPicture(const Bytes& data, QSize largest) {
  QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data.data()),
                                             static_cast<qsizetype>(data.size()));
  const QByteArray format = rasterFormat(bytes);
  if (format.isEmpty() || (format == "png" && !hasWholeChunks(bytes))) return {};
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer, format);
  reader.setAutoDetectImageFormat(false);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (!isFewEnough(size)) return {};
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

QtPictureDecoder::QtPictureDecoder(std::function<QSize()> largest)
    : largest_(std::move(largest)), thread_([this] { run(); }) {
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
  const QSize largest = largest_();  // here, as screens are the main thread's
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::move(data), largest, std::move(done)});
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
    QImage image = decodedPicture(job->data, job->largest);
    job->data = {};
    job->done(image.isNull() ? nullptr : std::make_shared<QtPicture>(std::move(image)));
  }
}

}  // namespace torvane
