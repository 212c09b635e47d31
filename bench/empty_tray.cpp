// A status item with an icon and a menu, and nothing else: what Qt takes by itself.

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "xcb");
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QMenu menu;
  QObject::connect(menu.addAction("Quit"), &QAction::triggered, &application,
                   &QCoreApplication::quit);
  QPixmap picture(22, 22);
  picture.fill(Qt::transparent);
  QPainter(&picture).drawEllipse(4, 4, 14, 14);
  QSystemTrayIcon item(picture);
  item.setToolTip("Empty");
  item.setContextMenu(&menu);
  item.show();
  return QApplication::exec();
}
