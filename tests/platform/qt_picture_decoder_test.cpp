#include "platform/linux/qt_picture_decoder.h"
#include "support/folders.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImageWriter>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

namespace torvane {
namespace {

const QSize kScreen(1920, 1080);

Bytes bytesOf(const QByteArray& data) {
  return {data.begin(), data.end()};
}

Bytes encoded(const QImage& image, const char* format) {
  QByteArray data;
  QBuffer buffer(&data);
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format));
  return bytesOf(data);
}

QImage blue(int width, int height) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(Qt::blue);
  return image;
}

void put32(Bytes& data, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) {
    data.at(at + static_cast<std::size_t>(i)) = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
}

std::uint32_t crcOf(const Bytes& data, std::size_t from, std::size_t to) {
  std::uint32_t crc = ~0U;
  for (std::size_t i = from; i < to; ++i) {
    crc ^= data.at(i);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) ? 0xedb88320U : 0);
  }
  return ~crc;
}

// A PNG file whose header claims this size.
Bytes claiming(std::uint32_t width, std::uint32_t height) {
  Bytes data = encoded(blue(8, 8), "png");
  put32(data, 16, width);
  put32(data, 20, height);
  put32(data, 29, crcOf(data, 12, 29));
  return data;
}

long peakKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
  }
  return 0;
}

TEST(DecodedPicture, ReadsTheUsualFormats) {
  for (const char* format : {"png", "jpg", "bmp"}) {
    const QImage image = decodedPicture(encoded(blue(64, 48), format), kScreen);
    EXPECT_EQ(image.size(), QSize(64, 48)) << format;
    EXPECT_GT(image.pixelColor(30, 20).blue(), 250) << format;
  }
}

TEST(DecodedPicture, KeepsTransparency) {
  QImage image(4, 4, QImage::Format_ARGB32);
  image.fill(QColor(0, 0, 255, 100));
  EXPECT_EQ(qAlpha(decodedPicture(encoded(image, "png"), kScreen).pixel(1, 1)), 100);
}

TEST(DecodedPicture, IsNoneForWhatIsNoPicture) {
  for (const char* text : {"", "not a picture", "\x89PNG\r\n\x1a\n", "P6 2 2 255 "}) {
    EXPECT_TRUE(decodedPicture(bytesOf(text), kScreen).isNull()) << text;
  }
}

TEST(DecodedPicture, IsNoneForADrawing) {
  const char* svg =
      "<?xml version='1.0'?><svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>"
      "<rect width='9' height='9'/></svg>";
  EXPECT_TRUE(decodedPicture(bytesOf(svg), kScreen).isNull());
}

TEST(DecodedPicture, IsNoneAbove64MillionPixelsWithoutReadingThem) {
  const long before = peakKilobytes();
  EXPECT_TRUE(decodedPicture(claiming(8001, 8000), kScreen).isNull());
  EXPECT_TRUE(decodedPicture(claiming(0x7fffffff, 0x7fffffff), kScreen).isNull());
  EXPECT_TRUE(decodedPicture(claiming(64'000'001, 1), kScreen).isNull());
  EXPECT_LT(peakKilobytes() - before, 20'000);
}

TEST(DecodedPicture, IsNoneForAChunkThatClaimsMoreThanTheFile) {
  Bytes data = encoded(blue(8, 8), "png");
  Bytes chunk = {0x3f, 0xff, 0xff, 0xff, 't', 'E', 'X', 't', 'a', 0, 'b', 0, 0, 0, 0};
  data.insert(data.begin() + 33, chunk.begin(), chunk.end());
  const long before = peakKilobytes();
  EXPECT_TRUE(decodedPicture(data, kScreen).isNull());
  EXPECT_LT(peakKilobytes() - before, 20'000);
}

TEST(DecodedPicture, KeepsWhatIsLargerThanTheScreenAtTheScreensSize) {
  EXPECT_EQ(decodedPicture(encoded(blue(3840, 2160), "png"), kScreen).size(), kScreen);
  EXPECT_EQ(decodedPicture(encoded(blue(4000, 1000), "png"), kScreen).size(), QSize(4000, 1000));
}

TEST(DecodedPicture, SurvivesFilesMadeToCrashDecoders) {
  const auto folder = vectorsFolder() / "png";
  if (vectorsFolder().empty() || !std::filesystem::exists(folder)) {
    GTEST_SKIP() << "the public test vectors are not here: set TORVANE_VECTORS_DIR";
  }
  const long before = peakKilobytes();
  int files = 0, pictures = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".png") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    const std::string data = text.str();
    const QImage image = decodedPicture({data.begin(), data.end()}, kScreen);
    pictures += image.isNull() ? 0 : 1;
    ++files;
  }
  EXPECT_GE(files, 80);
  EXPECT_GE(pictures, 60);
  EXPECT_LT(peakKilobytes() - before, 300'000);
}

TEST(QtPictureDecoder, AnswersOnceInOrderAndOnAnotherThread) {
  QtPictureDecoder decoder([] { return kScreen; });
  std::vector<int> sizes;
  std::promise<std::thread::id> last;
  for (int i = 1; i <= 3; ++i) {
    const Bytes data = i == 2 ? bytesOf("no picture") : encoded(blue(i, 1), "png");
    decoder.decode(data, [&, i](const std::shared_ptr<const Picture>& picture) {
      const auto* image = static_cast<const QtPicture*>(picture.get());
      sizes.push_back(image ? image->image().width() : 0);
      if (i == 3) last.set_value(std::this_thread::get_id());
    });
  }
  EXPECT_NE(last.get_future().get(), std::this_thread::get_id());
  EXPECT_EQ(sizes, (std::vector<int>{1, 0, 3}));
}

TEST(QtPictureDecoder, KeepsWhatTheScreensOfNowCanShow) {
  QSize screen(100, 100);
  QtPictureDecoder decoder([&] { return screen; });
  const Bytes data = encoded(blue(400, 300), "png");
  const auto decodedSize = [&] {
    std::promise<QSize> size;
    decoder.decode(data, [&](const std::shared_ptr<const Picture>& picture) {
      size.set_value(static_cast<const QtPicture*>(picture.get())->image().size());
    });
    return size.get_future().get();
  };
  EXPECT_EQ(decodedSize(), QSize(133, 100));
  screen = QSize(200, 200);
  EXPECT_EQ(decodedSize(), QSize(266, 200));
  screen = QSize(1000, 1000);
  EXPECT_EQ(decodedSize(), QSize(400, 300));
}

TEST(QtPictureDecoder, EndsWithWorkStillWaiting) {
  const Bytes data = encoded(blue(2000, 2000), "png");
  QtPictureDecoder decoder([] { return kScreen; });
  for (int i = 0; i < 4; ++i) decoder.decode(data, [](const std::shared_ptr<const Picture>&) {});
}

}  // namespace
}  // namespace torvane
