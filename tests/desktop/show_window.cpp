// A full-screen window that passes for the running show of an office program: its process and its
// class are called like those of LibreOffice Impress. The first argument may name the screen, by
// its number. Says "started" once it is on the screen, "click X Y" and "key TEXT" for what it gets,
// and does what it is told on standard input:
//
//   picture FILE   shows the picture as slides are shown: as large as fits, black around it
//   raise          puts itself in front of all other windows
//   cover          opens a window over its middle that the window manager has no say in
//   uncover        closes that
//   end            goes, as the window of a show does that ends

#include <sys/prctl.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include "told.h"

namespace {

class Show final : public QWidget {
 public:
  void obey(const std::string& line) {
    const auto space = line.find(' ');
    const std::string command = line.substr(0, space);
    if (command == "picture" && space != std::string::npos) turnTo(line.substr(space + 1));
    if (command == "raise") {
      raise();
      activateWindow();
    }
    if (command == "cover") cover();
    if (command == "uncover") cover_.hide();
    if (command == "end") hide();
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), slide_.isNull() ? QColor(0, 120, 60) : QColor(Qt::black));
    QRect place({}, slide_.size().scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(rect().center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, slide_);
    if (!isShown_) QTimer::singleShot(0, this, [] { Told::say("started"); });
    isShown_ = true;
  }

  void mousePressEvent(QMouseEvent* event) override {
    const QPoint at = event->globalPosition().toPoint();
    Told::say("click " + std::to_string(at.x()) + " " + std::to_string(at.y()));
  }

  void keyPressEvent(QKeyEvent* event) override { Told::say("key " + event->text().toStdString()); }

 private:
  void turnTo(const std::string& file) {
    slide_ = QImage(QString::fromStdString(file));
    if (slide_.isNull()) Told::say("no picture");
    repaint();
  }

  void cover() {
    cover_.setPalette(QColor(0, 40, 140));
    cover_.setGeometry(geometry().adjusted(100, 100, -100, -100));
    cover_.show();
    cover_.raise();
  }

  QImage slide_;
  QWidget cover_{nullptr, Qt::FramelessWindowHint | Qt::BypassWindowManagerHint};
  bool isShown_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  ::prctl(PR_SET_NAME, "soffice.bin");
  qputenv("RESOURCE_NAME", "soffice");
  QApplication::setApplicationName("Soffice");
  QApplication application(argc, argv);
  Show show;
  const auto* screen = argc > 1 ? QApplication::screens().value(QString(argv[1]).toInt())
                                : QApplication::primaryScreen();
  if (!screen) return 2;
  show.setGeometry(screen->geometry());
  show.setWindowTitle("Presenting: Deck");
  show.showFullScreen();
  const Told told([&show](const std::string& line) { show.obey(line); });
  return QApplication::exec();
}
