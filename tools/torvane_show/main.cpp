// torvane-show: a PDF on the whole screen, which the engine can drive.

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QScreen>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/termination_signals.h"
#include "torvane_show/answer_lines.h"
#include "torvane_show/command_line.h"
#include "torvane_show/show_socket.h"
#include "torvane_show/talk.h"

namespace torvane::show {
namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

QScreen* chosenScreen() {
  const auto screens = QGuiApplication::screens();
  const QScreen* lookedAt = QGuiApplication::screenAt(QCursor::pos());
  const auto index = screens.indexOf(lookedAt ? lookedAt : QGuiApplication::primaryScreen());
  return screens.at(screenForShow(static_cast<int>(screens.size()), static_cast<int>(index)));
}

// What a show consists of, from the moment in which its deck is known.
struct Show {
  Show(const Deck& known, PdfWorker& worker)
      : deck(known), window(deck, worker), talk(deck, worker, window) {}

  const Deck deck;
  ShowWindow window;
  Talk talk;
  ShowSocket socket{[this](const Question& question, const ShowSocket::Reply& reply) {
    talk.answer(question, reply);
  }};
};

void begin(Show& show, int page) {
  show.window.go(Position{std::min(page, show.deck.count())});
  show.window.showOn(chosenScreen());
  if (!show.socket.listen())
    std::fputs("torvane-show: the engine cannot drive this show.\n", stderr);
  // Gone from where the engine looks before the connection ends: this was no accident.
  QObject::connect(&show.window, &ShowWindow::closed, [&show] {
    show.socket.close();
    QCoreApplication::quit();
  });
}

QString askedFor() {
  return QFileDialog::getOpenFileName(nullptr, "Torvane Show", {}, "PDF (*.pdf *.PDF)");
}

void tell(const QString& problem, bool hasDialog) {
  std::fprintf(stderr, "torvane-show: %s\n", qUtf8Printable(problem));
  if (hasDialog) QMessageBox(QMessageBox::Warning, "Torvane Show", problem).exec();
}

int present(const CommandLine& line) {
  const QString file = line.file.empty() ? askedFor() : QString::fromStdString(line.file);
  if (file.isEmpty()) return 0;
  auto* worker = new PdfWorker(file);  // it never ends
  std::unique_ptr<Show> show;
  QObject::connect(worker, &PdfWorker::opened, qApp, [&](const Deck& deck) {
    show = std::make_unique<Show>(deck, *worker);
    begin(*show, line.page);
  });
  QObject::connect(worker, &PdfWorker::failed, qApp, [&](const QString& problem) {
    tell(problem, line.hasDialog);
    QCoreApplication::exit(kFailed);
  });
  const TerminationSignals ending([] { QCoreApplication::quit(); });
  worker->start();
  const int status = QCoreApplication::exec();
  if (show) show->socket.close();
  std::fflush(nullptr);
  std::_Exit(status);
}

int run(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const CommandLine line = parseCommandLine(arguments);
  if (!line.error.empty()) {
    std::fprintf(stderr, "torvane-show: %s\n", line.error.c_str());
    return kMisused;
  }
  if (line.mode == CommandLine::Mode::kHelp) return std::fputs(kHelp, stdout) < 0;
  if (line.mode == CommandLine::Mode::kVersion)
    return std::puts("torvane-show " TORVANE_VERSION) < 0;
  const bool isSeen = line.mode == CommandLine::Mode::kShow;
  // The helper finds windows, and lays its ink over them, through X11 or XWayland.
  if (!isSeen) qputenv("QT_QPA_PLATFORM", "offscreen");
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "xcb;wayland");
  if (isSeen && qEnvironmentVariableIsEmpty("DISPLAY") &&
      qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qgetenv("QT_QPA_PLATFORM").startsWith("xcb")) {
    std::fputs("torvane-show: there is no screen to show anything on.\n", stderr);
    return kFailed;
  }
  QLoggingCategory::setFilterRules(QStringLiteral("qt.pdf.bookmarks=false"));  // of no use to users
  QApplication application(argc, argv);
  QApplication::setApplicationName("torvane-show");
  QApplication::setDesktopFileName("app.torvane.show");
  return isSeen ? present(line) : answerLines(QString::fromStdString(line.file), line.page);
}

}  // namespace
}  // namespace torvane::show

int main(int argc, char** argv) {
  return torvane::show::run(argc, argv);
}
