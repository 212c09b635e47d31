#include "platform/linux/qt_alerts.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBlock>
#include <QTextDocument>
#include <QWindow>
#include <functional>

#include "platform/linux/qt_application.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/qt_text.h"
#include "support/naughty_names.h"
#include "support/qt_event_loop.h"

namespace torvane {
namespace {

class QtAlertsTest : public testing::Test {
 protected:
  // Runs an alert and, once it is open, `whenOpen` with its window.
  int run(const AlertContent& content, std::function<void(QMessageBox&)> whenOpen) {
    queue.async([whenOpen = std::move(whenOpen)] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      whenOpen(*box);
    });
    return alerts.runModal(content);
  }

  static QPushButton* button(const QMessageBox& box, int index) {
    return qobject_cast<QPushButton*>(box.buttons().at(index));
  }

  // A key that should close the alert; where it does not, the alert closes with another answer.
  static void press(QMessageBox& box, Qt::Key key) {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&box, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
    QApplication::sendEvent(&box, &up);
    if (box.isVisible()) box.buttons().at(1)->click();
  }

  const AlertContent pairing{.message = "Pair with “Anna's iPad”?",
                             .informativeText = "It wants to control the presentation.",
                             .buttons = {"Pair", "Ask Later", "Ignore"}};
  const AlertContent guarded{
      .message = "m", .informativeText = "i", .buttons = {"Pair", "Ignore"}, .isGuarded = true};
  QtMainQueue queue;
  QtApplication application;
  QtAlerts alerts{application};
};

// As it comes from the desktop: by the window.
void type(QMessageBox& box, Qt::Key key) {
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, Qt::NoModifier);
    QApplication::sendEvent(box.windowHandle(), &event);
  }
}

TEST_F(QtAlertsTest, AnswersWithTheButtonsPlace) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(run(pairing, [i](QMessageBox& box) { box.buttons().at(i)->click(); }),
              kAlertFirstButton + i);
  }
}

TEST_F(QtAlertsTest, ShowsTheButtonsInTheOrderGiven) {
  run(pairing, [](QMessageBox& box) {
    EXPECT_EQ(box.buttons().at(0)->text(), "Pair");
    EXPECT_EQ(box.buttons().at(1)->text(), "Ask Later");
    EXPECT_EQ(box.buttons().at(2)->text(), "Ignore");
    EXPECT_LT(box.buttons().at(0)->x(), box.buttons().at(1)->x());
    EXPECT_LT(box.buttons().at(1)->x(), box.buttons().at(2)->x());
    box.close();
  });
}

TEST_F(QtAlertsTest, TheFirstButtonIsTheDefault) {
  EXPECT_EQ(run(pairing,
                [](QMessageBox& box) {
                  EXPECT_TRUE(button(box, 0)->isDefault());
                  press(box, Qt::Key_Return);
                }),
            kAlertFirstButton);
}

TEST_F(QtAlertsTest, EscapeIsTheLastButton) {
  EXPECT_EQ(run(pairing, [](QMessageBox& box) { press(box, Qt::Key_Escape); }),
            kAlertFirstButton + 2);
}

TEST_F(QtAlertsTest, ClosingTheWindowIsTheLastButton) {
  EXPECT_EQ(run(pairing, [](QMessageBox& box) { box.close(); }), kAlertFirstButton + 2);
}

TEST_F(QtAlertsTest, HasOneButtonUnlessMoreAreGiven) {
  EXPECT_EQ(run({.message = "m", .informativeText = "i"},
                [](QMessageBox& box) {
                  EXPECT_EQ(box.buttons().size(), 1);
                  EXPECT_EQ(box.buttons().at(0)->text(), "OK");
                  box.close();
                }),
            kAlertFirstButton);
}

TEST_F(QtAlertsTest, ShowsTextsAsTheyAre) {
  AlertContent hostile{.message = "<b>bold</b> & <img src='/etc/hostname'>",
                       .informativeText = "&lt;i&gt; <h1>large</h1>\n&amp;",
                       .buttons = {"A & B", "&C"}};
  run(hostile, [&](QMessageBox& box) {
    EXPECT_EQ(box.text().toStdString(), hostile.message);
    EXPECT_EQ(box.informativeText().toStdString(), hostile.informativeText);
    int shown = 0;
    for (const auto* label : box.findChildren<QLabel*>()) {
      EXPECT_EQ(label->textFormat(), Qt::PlainText);
      shown += label->text().isEmpty() ? 0 : 1;
    }
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(box.buttons().at(0)->text(), "A && B");
    EXPECT_EQ(box.buttons().at(0)->accessibleName(), "A & B");
    EXPECT_TRUE(box.buttons().at(1)->shortcut().isEmpty());
    box.close();
  });
}

TEST_F(QtAlertsTest, NaughtyNamesAreShownAsTheyAreAndTheLayoutHolds) {
  const auto names = naughtyNames();
  if (names.empty()) GTEST_SKIP() << "no list of naughty names below TORVANE_VECTORS_DIR";
  for (const auto& name : names) {
    run({.message = "Pair with “" + name + "”?", .informativeText = name, .buttons = {"A", "B"}},
        [&](QMessageBox& box) {
          EXPECT_EQ(box.informativeText(), qtText(name));
          for (const auto* label : box.findChildren<QLabel*>()) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
          }
          EXPECT_LE(box.width(), 1000) << name;
          EXPECT_GE(box.buttons().at(0)->width(), 20);
          box.close();
        });
  }
}

TEST_F(QtAlertsTest, IsAModalWindowUnderTheProgramsName) {
  run(pairing, [](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), "Torvane P2P Helper");
    EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
    EXPECT_TRUE(box.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(box.windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(box.windowFlags() & Qt::WindowMinMaxButtonsHint);
    box.close();
  });
}

TEST_F(QtAlertsTest, TakesTheKeyboardOnceItWasBroughtToTheFront) {
  run(pairing, [](QMessageBox& box) {
    EXPECT_TRUE(box.testAttribute(Qt::WA_ShowWithoutActivating));
    box.close();
  });
  application.activateIgnoringOtherApps();
  run(pairing, [](QMessageBox& box) {
    EXPECT_FALSE(box.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(runEventsUntil([&] { return box.isActiveWindow(); }));
    box.close();
  });
  run(pairing, [](QMessageBox& box) {
    EXPECT_TRUE(box.testAttribute(Qt::WA_ShowWithoutActivating));
    box.close();
  });
}

TEST_F(QtAlertsTest, TakesTheKeyboardFromAnAlertOfTheProgramsOwn) {
  application.activateIgnoringOtherApps();
  run(pairing, [&](QMessageBox& outer) {
    ASSERT_TRUE(runEventsUntil([&] { return outer.isActiveWindow(); }));
    run(pairing, [](QMessageBox& inner) {
      EXPECT_FALSE(inner.testAttribute(Qt::WA_ShowWithoutActivating));
      inner.close();
    });
    outer.close();
  });
}

TEST_F(QtAlertsTest, GuardedAlertTakesAKeyAfterTheFirstSecondOnly) {
  application.activateIgnoringOtherApps();
  EXPECT_EQ(run(guarded,
                [&](QMessageBox& box) {
                  ASSERT_TRUE(runEventsUntil([&] { return box.isActiveWindow(); }));
                  for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape}) {
                    type(box, key);
                    EXPECT_TRUE(box.isVisible());
                  }
                  EXPECT_TRUE(button(box, 0)->isDefault());
                  queue.after(1.2, [&box] { type(box, Qt::Key_Return); });
                }),
            kAlertFirstButton);
}

TEST_F(QtAlertsTest, GuardedAlertIsNotClosedInTheFirstSecond) {
  EXPECT_EQ(run(guarded,
                [&](QMessageBox& box) {
                  box.windowHandle()->close();
                  EXPECT_TRUE(box.isVisible());
                  queue.after(1.2, [&box] { box.windowHandle()->close(); });
                }),
            kAlertFirstButton + 1);
}

TEST_F(QtAlertsTest, GuardedAlertTakesAScreenReadersPressAtOnce) {
  EXPECT_EQ(run(guarded,
                [](QMessageBox& box) {
                  auto* pair = QAccessible::queryAccessibleInterface(box.buttons().at(0));
                  pair->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
                }),
            kAlertFirstButton);
}

TEST_F(QtAlertsTest, OtherAlertsTakeAKeyAtOnce) {
  EXPECT_EQ(run(pairing, [](QMessageBox& box) { type(box, Qt::Key_Escape); }),
            kAlertFirstButton + 2);
}

TEST_F(QtAlertsTest, OpensInTheMiddleOfTheScreenAskedFor) {
  AlertContent there = pairing;
  there.screen = QtScreens::frameOf({300, 200, 500, 400});
  run(there, [](QMessageBox& box) {
    EXPECT_LE((box.frameGeometry().center() - QRect(300, 200, 500, 400).center()).manhattanLength(),
              8);  // its layout may still grow
    box.close();
  });
}

TEST_F(QtAlertsTest, LinesWithBulletsGoOnBelowTheirWords) {
  run({.message = "m", .informativeText = "First\n•  Second\nThird"}, [](QMessageBox& box) {
    const auto* label = box.findChild<QLabel*>("qt_msgbox_informativelabel");
    const auto* text = label->findChild<QTextDocument*>();
    ASSERT_NE(text, nullptr);
    ASSERT_EQ(text->blockCount(), 3);
    const auto bullet = text->findBlockByNumber(1).blockFormat();
    EXPECT_GT(bullet.leftMargin(), 0);
    EXPECT_EQ(bullet.textIndent(), -bullet.leftMargin());
    EXPECT_EQ(text->findBlockByNumber(0).blockFormat().leftMargin(), 0);
    EXPECT_EQ(text->findBlockByNumber(2).blockFormat().leftMargin(), 0);
    EXPECT_EQ(box.informativeText(), "First\n•  Second\nThird");
    box.close();
  });
}

TEST_F(QtAlertsTest, FewWordsLeaveTheWindowsTitleItsPlace) {
  run({.message = "m", .informativeText = "i"}, [](QMessageBox& box) {
    const int title = box.fontMetrics().horizontalAdvance(box.windowTitle());
    EXPECT_GE(box.width(), 2 * title);  // its buttons lie beside it
    box.close();
  });
}

TEST_F(QtAlertsTest, ShowsTheProgramsIconOrAWarning) {
  QPixmap programs(48, 48);
  programs.fill(Qt::red);
  QApplication::setWindowIcon(programs);
  run({.message = "m", .informativeText = "i"}, [&](QMessageBox& box) {
    EXPECT_EQ(box.iconPixmap().toImage(), programs.toImage());
    box.close();
  });
  const auto style = AlertContent::Style::warning;
  run({.message = "m", .informativeText = "i", .style = style}, [](QMessageBox& box) {
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    box.close();
  });
}

TEST_F(QtAlertsTest, WrapsLongTextsThatCanBeCopied) {
  std::string text;
  for (int i = 0; i < 200; ++i) text += "words without end ";
  run({.message = text, .informativeText = text}, [](QMessageBox& box) {
    EXPECT_LE(box.width(), 1000);
    EXPECT_TRUE(box.textInteractionFlags() & Qt::TextSelectableByMouse);
    for (const auto* label : box.findChildren<QLabel*>()) {
      if (label->text().isEmpty()) continue;
      EXPECT_TRUE(label->wordWrap());
      EXPECT_GE(label->height(), label->heightForWidth(label->width()));
    }
    box.close();
  });
}

TEST_F(QtAlertsTest, AnswersANestedAlertFirst) {
  int inner = 0;
  const int outer = run(pairing, [&](QMessageBox& outerBox) {
    inner = run({.message = "inner", .informativeText = "", .buttons = {"One", "Two"}},
                [&](QMessageBox& innerBox) {
                  EXPECT_NE(&innerBox, &outerBox);
                  innerBox.buttons().at(1)->click();
                });
    outerBox.buttons().at(0)->click();
  });
  EXPECT_EQ(inner, kAlertFirstButton + 1);
  EXPECT_EQ(outer, kAlertFirstButton);
}

TEST_F(QtAlertsTest, QueuedWorkAndTimersGoOn) {
  int ticks = 0;
  queue.every(0.01, [&] {
    if (++ticks == 5) QApplication::activeModalWidget()->close();
  });
  bool ran = false;
  run(pairing, [&](QMessageBox&) { queue.async([&] { ran = true; }); });
  EXPECT_TRUE(ran);
  EXPECT_GE(ticks, 5);
}

TEST_F(QtAlertsTest, TerminatingEndsAlertsAndLetsNoneBegin) {
  int first = 0;
  int second = 0;
  queue.async([&] {
    first = run(pairing, [&](QMessageBox&) { application.terminate(); });
    second = alerts.runModal(pairing);
  });
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_EQ(first, kAlertFirstButton + 2);
  EXPECT_EQ(second, kAlertFirstButton + 2);
}

}  // namespace
}  // namespace torvane
