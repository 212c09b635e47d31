#include "platform/linux/qt_workspace.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QUrl>

#include "platform/linux/qt_text.h"

namespace torvane {

void QtWorkspace::openURL(const std::string& url) {
  const QUrl parsed(qtText(url), QUrl::StrictMode);
  if (parsed.isValid()) QDesktopServices::openUrl(parsed);
}

bool QtWorkspace::moveToTrash(const std::string& path) {
  // Where this folder is missing Qt moves the file into the current one and says it went well.
  const auto data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  return QDir().mkpath(data) && QFile::moveToTrash(qtText(path));
}

}  // namespace torvane
