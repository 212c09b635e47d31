#include "platform/linux/tray_menu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

#include "platform/linux/qt_text.h"
#include "support/naughty_names.h"
#include "support/qt_event_loop.h"

namespace torvane {
namespace {

MenuItem line(const std::string& title, int indentation = 0) {
  return {title, {}, indentation};
}

MenuItem command(
    const std::string& title, std::function<void()> action = [] {}) {
  return {title, std::move(action)};
}

MenuItem checked(MenuItem item) {
  item.isChecked = true;
  return item;
}

MenuItem separator() {
  MenuItem item;
  item.isSeparator = true;
  return item;
}

class FakeMenuDelegate final : public MenuDelegate {
 public:
  std::vector<MenuItem> items;
  int asked = 0;

  std::vector<MenuItem> menuNeedsUpdate() override {
    ++asked;
    return items;
  }
};

class TrayMenuTest : public testing::Test {
 protected:
  TrayMenuTest() { menu.setDelegate(delegate); }

  void open() { menu.menu().aboutToShow(); }
  QAction* action(int index) { return menu.menu().actions().at(index); }

  FakeMenuDelegate delegate;
  TrayMenu menu;
};

TEST_F(TrayMenuTest, ShowsTheItemsItIsGiven) {
  delegate.items = {line("Connected:"), line("Anna's iPad", 1), separator(),
                    checked(command("Launch at Login")), command("Quit")};
  open();
  ASSERT_EQ(menu.menu().actions().size(), 5);
  EXPECT_EQ(action(0)->text(), "Connected:");
  EXPECT_FALSE(action(0)->isEnabled());
  EXPECT_EQ(action(1)->text(), "    Anna's iPad");
  EXPECT_TRUE(action(2)->isSeparator());
  EXPECT_TRUE(action(3)->isChecked());
  EXPECT_FALSE(action(4)->isCheckable());
  EXPECT_TRUE(action(4)->isEnabled());
}

TEST_F(TrayMenuTest, AsksAgainEachTimeItOpens) {
  delegate.items = {command("Start Server")};
  open();
  delegate.items = {command("Stop Server"), command("Quit")};
  open();
  EXPECT_EQ(delegate.asked, 2);
  ASSERT_EQ(menu.menu().actions().size(), 2);
  EXPECT_EQ(action(0)->text(), "Stop Server");
}

TEST_F(TrayMenuTest, LeavesAMenuAloneThatWouldStayAsItIs) {
  delegate.items = {command("Quit")};
  open();
  const QAction* before = action(0);
  open();
  menu.update();
  EXPECT_EQ(action(0), before);
}

TEST_F(TrayMenuTest, WhatStaysKeepsItsAction) {
  delegate.items = {line("Advertising"), separator(),      command("Start Server"),
                    separator(),         command("Login"), command("Quit")};
  open();
  const auto actions = menu.menu().actions();
  const std::vector<QPointer<QAction>> before(actions.begin(), actions.end());
  delegate.items = {line("Connected:"),        line("iPad", 1),   separator(),
                    command("Stop Server"),    separator(),       line("Paired devices:"),
                    line("iPad", 1),           command("Forget"), separator(),
                    checked(command("Login")), command("Quit")};
  menu.update();
  EXPECT_EQ(action(2), before[1]);
  EXPECT_EQ(action(4), before[3]);
  EXPECT_EQ(action(9), before[4]);
  EXPECT_EQ(action(10), before[5]);
  EXPECT_TRUE(action(9)->isChecked());
  EXPECT_EQ(before[0], nullptr);
  EXPECT_EQ(before[2], nullptr);
}

TEST_F(TrayMenuTest, WhatHasGoneIsGoneForEver) {
  delegate.items = {command("Stop Server"), command("Quit")};
  open();
  const QPointer<QAction> stop = action(0);
  delegate.items = {command("Start Server"), command("Quit")};
  menu.update();
  EXPECT_EQ(stop, nullptr);
  EXPECT_EQ(action(0)->text(), "Start Server");
}

TEST_F(TrayMenuTest, ADeviceNamedLikeACommandIsAnotherEntry) {
  delegate.items = {command("Quit")};
  open();
  const QAction* quit = action(0);
  delegate.items = {line("Quit", 1), line("Quit"), line("Quit"), command("Quit")};
  menu.update();
  EXPECT_EQ(action(3), quit);
  for (const int i : {0, 1, 2}) EXPECT_FALSE(action(i)->isEnabled());
  EXPECT_NE(action(1), action(2));
}

TEST_F(TrayMenuTest, EntriesThatChangePlacesAreStillWhatTheySay) {
  std::string chosen;
  const auto entry = [&](const std::string& title) {
    return command(title, [&chosen, title] { chosen = title; });
  };
  delegate.items = {entry("A"), entry("B"), entry("C")};
  open();
  const QPointer<QAction> second = action(1);
  delegate.items = {entry("C"), entry("B"), entry("A")};
  menu.update();
  ASSERT_EQ(second, action(1));
  for (const int i : {0, 1, 2}) {
    action(i)->trigger();
    const std::string said = action(i)->text().toStdString();
    ASSERT_TRUE(runEventsUntil([&] { return chosen == said; }));
  }
}

TEST_F(TrayMenuTest, RunsTheLatestActionFromTheEventLoop) {
  int first = 0;
  int second = 0;
  delegate.items = {command("Quit", [&] { ++first; })};
  open();
  delegate.items = {command("Quit", [&] { ++second; })};
  open();
  action(0)->trigger();
  EXPECT_EQ(second, 0);
  ASSERT_TRUE(runEventsUntil([&] { return second == 1; }));
  EXPECT_EQ(first, 0);
}

TEST_F(TrayMenuTest, AnActionMayChangeTheMenu) {
  bool ran = false;
  delegate.items = {command("Forget", [&] {
    delegate.items.clear();
    menu.update();
    ran = true;
  })};
  open();
  action(0)->trigger();
  ASSERT_TRUE(runEventsUntil([&] { return ran; }));
  EXPECT_TRUE(menu.menu().isEmpty());
}

TEST_F(TrayMenuTest, AChoiceDoesNotMoveTheCheckMark) {
  delegate.items = {checked(command("Launch at Login"))};
  open();
  action(0)->trigger();
  EXPECT_TRUE(action(0)->isChecked());
}

TEST_F(TrayMenuTest, NamesKeepTheirCharacters) {
  delegate.items = {line("R&D_iPad & Co_"), line("two\tcolumns\nand lines")};
  open();
  EXPECT_EQ(action(0)->text(), "R&&D_iPad && Co_");
  EXPECT_TRUE(action(0)->shortcut().isEmpty());
  EXPECT_EQ(action(1)->text(), "two columns and lines");
}

TEST_F(TrayMenuTest, InformationWiderThanHalfAScreenTakesSeveralLines) {
  std::string text = "Not advertising:";
  for (int i = 0; i < 30; ++i) text += " a word " + std::to_string(i);
  delegate.items = {line(text, 1), command("Quit")};
  open();
  ASSERT_GT(menu.menu().actions().size(), 3);
  QString shown;
  for (QAction* each : menu.menu().actions()) {
    if (each->text() == "Quit") break;
    EXPECT_FALSE(each->isEnabled());
    EXPECT_TRUE(each->text().startsWith("    "));
    shown += each->text().mid(4);
  }
  EXPECT_EQ(shown.toStdString(), text);
  EXPECT_LT(menu.menu().sizeHint().width(), menu.menu().screen()->availableSize().width() * 2 / 3);
}

double luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
         0.0722 * linear(colour.blueF());
}

// The contrast that accessibility guidelines ask for, on the whole of light and dark desktops.
TEST_F(TrayMenuTest, InformationCanBeReadOnLightAndDarkDesktops) {
  delegate.items = {line("Connected:")};
  const QPalette before = QApplication::palette();
  for (const auto& [text, base] : {std::pair(QColor(Qt::black), QColor(Qt::white)),
                                   {"#fcfcfc", "#1b1e20"},
                                   {"#333", "#eee"}}) {
    QPalette palette;
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Base, base);
    QApplication::setPalette(palette);
    open();
    const QColor shown = menu.menu().palette().color(QPalette::Disabled, QPalette::Text);
    const auto [dark, light] = std::minmax({luminance(shown), luminance(base)});
    EXPECT_GT((light + 0.05) / (dark + 0.05), 4.5) << text.name().toStdString();
    EXPECT_NE(shown, text);
  }
  QApplication::setPalette(before);
}

TEST_F(TrayMenuTest, IsEmptyWithoutADelegate) {
  TrayMenu lonely;
  lonely.update();
  EXPECT_TRUE(lonely.menu().isEmpty());
}

// What a panel shows of a label that came over D-Bus: two '_' are one, a single one marks a key.
std::string shownByPanel(const std::string& label) {
  std::string shown;
  for (std::size_t i = 0; i < label.size(); ++i) {
    if (label[i] == '_') {
      if (i + 1 == label.size() || label[i + 1] != '_') continue;
      ++i;
    }
    shown += label[i];
  }
  return shown;
}

// What Qt sends for a label: the first '&' that is not at the end becomes the mark.
std::string sentByQt(const QString& label) {
  QString sent = label;
  const auto mark = sent.indexOf('&');
  if (mark >= 0 && mark != sent.size() - 1) sent[mark] = '_';
  return sent.toStdString();
}

TEST(ExportedLabelTest, NamesKeepTheirCharacters) {
  for (const std::string name :
       {"Quit", "a_b", "_", "__", "&", "a&", "&a", "_&", "&_", "R&D", "A & B & C", "_a_&_b_", ""}) {
    EXPECT_EQ(shownByPanel(sentByQt(exportedLabel(name))), name);
  }
}

TEST(PlainToolTipTest, IsNeverTakenForRichText) {
  EXPECT_EQ(plainToolTip("Torvane P2P Helper: iPad connected (A, B)"),
            "Torvane P2P Helper: iPad connected (A, B)");
  for (const std::string hostile : {"(<b>x</b>)", "<img src='x'>", "&lt;b", "(<qt>)"}) {
    EXPECT_TRUE(Qt::mightBeRichText(qtText(hostile)));
    const QString shown = plainToolTip(hostile);
    EXPECT_FALSE(Qt::mightBeRichText(shown));
    EXPECT_EQ(QString(shown).remove(QChar(0x2060)), qtText(hostile));
  }
}

// What Qt draws of a label: two '&' are one, a single one marks a key.
QString drawnByQt(const QString& label) {
  QString drawn;
  for (qsizetype i = 0; i < label.size(); ++i) {
    if (label[i] == '&' && ++i == label.size()) break;
    drawn += label[i];
  }
  return drawn;
}

TEST(NaughtyNamesTest, AreShownAsTheyAreInMenuAndTooltip) {
  const auto names = naughtyNames();
  if (names.empty()) GTEST_SKIP() << "no list of naughty names below TORVANE_VECTORS_DIR";
  constexpr QChar kWordJoiner(0x2060);
  FakeMenuDelegate delegate;
  TrayMenu menu;
  menu.setDelegate(delegate);
  for (const auto& name : names) {
    QString single = qtText(name);
    for (const char mark : {'\t', '\n', '\r'}) single.replace(mark, ' ');
    delegate.items = {line(name, 1)};
    menu.update();
    QString shown;
    for (const QAction* each : menu.menu().actions()) shown += drawnByQt(each->text()).mid(4);
    EXPECT_EQ(shown, single) << name;
    EXPECT_EQ(shownByPanel(sentByQt(exportedLabel(name))), qtText(name).toStdString());
    const QString toolTip = plainToolTip("connected (" + name + ")");
    EXPECT_FALSE(Qt::mightBeRichText(toolTip)) << name;
    EXPECT_EQ(QString(toolTip).remove(kWordJoiner),
              QString("connected (" + qtText(name) + ")").remove(kWordJoiner))
        << name;
  }
}

}  // namespace
}  // namespace torvane
