#include "platform/linux/display_guard.h"

#include <QString>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace torvane {
namespace {

constexpr const char* kNoDisplay =
    "Torvane P2P Helper needs a desktop, and finds no display: start it from a terminal or menu of "
    "your desktop session.\n";

std::mutex mutex;    // Qt may warn from threads of its own
std::string unsaid;  // what was warned of

void hold(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type == QtFatalMsg) {
    std::fputs(kNoDisplay, stderr);
    std::_Exit(EXIT_FAILURE);  // Qt would abort
  }
  const std::lock_guard lock(mutex);
  unsaid += qFormatLogMessage(type, context, text).toStdString() + "\n";
}

}  // namespace

DisplayGuard::DisplayGuard() : before_(qInstallMessageHandler(&hold)) {}

DisplayGuard::~DisplayGuard() {
  qInstallMessageHandler(before_);
  const std::lock_guard lock(mutex);
  std::fputs(unsaid.c_str(), stderr);
  unsaid.clear();
}

}  // namespace torvane
