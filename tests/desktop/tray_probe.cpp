// A status item on a real desktop, driven by the tests beside this file through the panel. Says
// what happens to it, one line each.

#include <QApplication>
#include <QMenu>
#include <cstdio>
#include <string>

#include "platform/linux/qt_alerts.h"
#include "platform/linux/qt_application.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_status_item.h"
#include "platform/linux/termination_signals.h"
#include "platform/linux/x11_watch.h"

namespace torvane {
namespace {

void say(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

class ProbeDelegate final : public MenuDelegate {
 public:
  explicit ProbeDelegate(StatusItem& item) : item_(item) { showIcon(); }

  std::vector<MenuItem> menuNeedsUpdate() override {
    say("asked");
    return {{"Connected:", {}},
            {"R&D_iPad & <b>Co</b>_", {}, 1},
            {.title = "", .action = {}, .isSeparator = true},
            {"Show Alert…", [this] { showAlert(); }},
            {isConnected_ ? "Disconnect" : "Connect", [this] { toggle(); }},
            {.title = "Checked", .action = [] {}, .isChecked = true},
            {"Quit", [this] { application_.terminate(); }}};
  }

 private:
  void showIcon() {
    item_.setIcon(
        {.symbolName = isConnected_ ? "dot.radiowaves.left.and.right" : "dot.radiowaves.right",
         .accessibilityDescription = "Torvane P2P Helper",
         .toolTip = isConnected_ ? "connected (<b>R&D</b>)" : "waiting",
         .appearsDisabled = !isConnected_});
  }

  void toggle() {
    isConnected_ = !isConnected_;
    showIcon();
    say(isConnected_ ? "connected" : "disconnected");
  }

  void showAlert() {
    say("alert open");
    application_.activateIgnoringOtherApps();
    const int answer = alerts_.runModal({.message = "Pair with “<b>R&D</b>_iPad”?",
                                         .informativeText = "A device wants to connect.",
                                         .buttons = {"Pair", "Ignore"}});
    say("alert answered " + std::to_string(answer));
  }

  StatusItem& item_;
  QtApplication application_;
  QtAlerts alerts_{application_};
  bool isConnected_ = false;
};

int run(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setQuitLockEnabled(false);
  QApplication::setApplicationName("Torvane P2P Helper");
  QtApplication port;
  const TerminationSignals endingSignals([&] { port.terminate(); });
  const auto x11 = X11Watch::open();
  QtStatusBar bar(x11.get());
  const auto item = bar.makeStatusItem();
  ProbeDelegate delegate(*item);
  item->setMenu(delegate);
  say("started");
  const int status = QApplication::exec();
  say("ended");
  return status;
}

}  // namespace
}  // namespace torvane

int main(int argc, char** argv) {
  return torvane::run(argc, argv);
}
