#include "torvane_show/pdf_pages.h"

#include <QBuffer>
#include <QFileInfo>
#include <QPainter>
#include <QPdfBookmarkModel>
#include <algorithm>

#include "torvane_show/notes.h"

namespace torvane::show {
namespace {

constexpr int kMostPages = 10'000;
constexpr int kDeepestTitle = 3;      // levels of the table of contents
constexpr int kMostTitles = 20'000;   // entries of it that are looked at
constexpr int kLongestTitle = 1'000;  // characters
constexpr qsizetype kLargestPng = 1'500'000;
constexpr double kFlattest = 0.05;  // height of a page divided by width, and the other way round

QString sentence(QPdfDocument::Error error, const QString& name) {
  switch (error) {
    case QPdfDocument::Error::None:
      return {};
    case QPdfDocument::Error::FileNotFound:
      return QStringLiteral("The file %1 cannot be opened.").arg(name);
    case QPdfDocument::Error::IncorrectPassword:
    case QPdfDocument::Error::UnsupportedSecurityScheme:
      return QStringLiteral("%1 is protected by a password: show a copy without one.").arg(name);
    default:
      return QStringLiteral("%1 is not a PDF that can be shown.").arg(name);
  }
}

// Of a page that says nothing sensible about its size: that of a slide.
QSizeF sensible(QSizeF size) {
  const bool isSensible = size.width() > 0 && size.height() > 0 &&
                          size.height() >= kFlattest * size.width() &&
                          size.width() >= kFlattest * size.height();
  return isSensible ? size : QSizeF(4, 3);
}

std::string utf8(const QString& text) {
  return text.left(kLongestTitle).simplified().toUtf8().toStdString();
}

}  // namespace

QString PdfPages::open(const QString& file) {
  const QFileInfo info(file);
  file_ = info.absoluteFilePath();
  // A pipe would be waited for.
  if (!info.isFile()) return sentence(QPdfDocument::Error::FileNotFound, info.fileName());
  auto error = document_.load(file_);
  if (error == QPdfDocument::Error::None && document_.pageCount() < 1)
    error = QPdfDocument::Error::InvalidFileFormat;
  return sentence(error, info.fileName());
}

Deck PdfPages::deck() {
  const QFileInfo info(file_);
  const auto count = static_cast<std::size_t>(std::min(document_.pageCount(), kMostPages));
  Deck deck;
  deck.path = file_.toUtf8().toStdString();
  deck.title = utf8(info.fileName());
  deck.revision =
      std::to_string(info.lastModified().toMSecsSinceEpoch()) + "-" + std::to_string(info.size());
  auto notes = notesBeside(deck.path, count);
  for (std::size_t index = 0; index < count; ++index) {
    const QSizeF size = sensible(document_.pagePointSize(static_cast<int>(index)));
    deck.pages.push_back({"Page " + std::to_string(index + 1), std::move(notes[index]),
                          size.height() / size.width()});
  }
  readTitles(deck);
  return deck;
}

// A page's title is the first and least deep entry for it in the table of contents.
void PdfPages::readTitles(Deck& deck) {
  QPdfBookmarkModel contents;
  contents.setDocument(&document_);
  std::vector<bool> hasTitle(deck.pages.size());
  QList<QModelIndex> level = {QModelIndex()};
  int left = kMostTitles;
  for (int depth = 0; depth < kDeepestTitle; ++depth) {
    QList<QModelIndex> below;
    for (const QModelIndex& parent : level) {
      for (int row = 0; row < contents.rowCount(parent) && --left > 0; ++row) {
        const QModelIndex entry = contents.index(row, 0, parent);
        below.append(entry);
        const int page = entry.data(int(QPdfBookmarkModel::Role::Page)).toInt();
        const auto title = utf8(entry.data(int(QPdfBookmarkModel::Role::Title)).toString());
        const auto index = static_cast<std::size_t>(page);
        if (page < 0 || index >= deck.pages.size() || hasTitle[index] || title.empty()) continue;
        deck.pages[index].title = title;
        hasTitle[index] = true;
      }
    }
    level = std::move(below);
  }
}

QImage PdfPages::image(int page, QSize room) {
  const QSizeF whole = sensible(document_.pagePointSize(page - 1));
  const QSize size = whole.scaled(room, Qt::KeepAspectRatio).toSize().expandedTo(QSize(1, 1));
  QImage image(size, QImage::Format_RGB32);
  image.fill(Qt::white);
  const QImage drawn = document_.render(page - 1, size);
  if (!drawn.isNull()) QPainter(&image).drawImage(0, 0, drawn);
  return image;
}

QByteArray pictureFile(const QImage& image) {
  constexpr int kQuickly = 80;  // the less a PNG is packed, the sooner it is there
  constexpr int kJpegQuality = 90;
  QByteArray bytes;
  QBuffer file(&bytes);
  file.open(QIODevice::WriteOnly);
  if (image.save(&file, "PNG", kQuickly) && bytes.size() <= kLargestPng) return bytes;
  bytes.clear();
  file.seek(0);
  return image.save(&file, "JPEG", kJpegQuality) ? bytes : QByteArray();
}

}  // namespace torvane::show
