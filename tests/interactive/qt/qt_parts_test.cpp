// The parts of the dialog of "bioqt", and what a screen reader gets from them.

#include "helpers/qt/dialog.h"
#include "tests/gathering/robot.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QMouseEvent>
#include <QProgressBar>
#include <QWindow>
#include <gmock/gmock.h>
#include <thread>

using namespace std::chrono_literals;

namespace {

class QtParts : public testing::Test {
 protected:
  void Complete() {
    Robot robot(1);
    while (!gathering.IsComplete()) gathering.Add(robot.Press());
  }

  // As if the user had pressed another key.
  void Update() {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QCoreApplication::sendEvent(dialog.windowHandle(), &press);
  }

  std::string Said() const { return dialog.findChild<QLabel*>()->text().toStdString(); }
  std::string Description() const { return bar.accessibleDescription().toStdString(); }

  int count = 3;
  char name[5] = "test";
  char option[10] = "-platform";
  char platform[10] = "offscreen";
  char* arguments[4] = {name, option, platform, nullptr};
  QApplication application{count, arguments};
  Gathering gathering{SystemBytes(), false};
  Dialog dialog{gathering, false};
  const QProgressBar& bar = *dialog.findChild<QProgressBar*>();
};

}  // namespace

TEST_F(QtParts, BarHasANameAndTheTextOfTheDialog) {
  dialog.show();
  QCoreApplication::processEvents();
  EXPECT_TRUE(bar.hasFocus());
  EXPECT_EQ("0%", bar.text().toStdString());
  EXPECT_EQ("Progress", bar.accessibleName().toStdString());
  EXPECT_TRUE(Said().starts_with("Move the mouse around")) << Said();
  EXPECT_EQ(Said(), Description());

  Complete();
  Update();
  EXPECT_EQ("100%", bar.text().toStdString());
  EXPECT_EQ("That is enough. Please stop typing.", Said());
  EXPECT_EQ(Said(), Description());
}

TEST_F(QtParts, TheSmallestDialogHasRoomForItsTextAndForTheMouse) {
  dialog.show();
  dialog.resize(0, 0);
  QCoreApplication::processEvents();
  const QLabel& text = *dialog.findChild<QLabel*>();
  EXPECT_EQ(text.heightForWidth(text.width()), text.height());
  const int room = bar.geometry().top() - text.geometry().bottom() - 1;
  EXPECT_EQ(6 * dialog.fontMetrics().height() + dialog.layout()->spacing(), room);
  EXPECT_EQ(60 * dialog.fontMetrics().averageCharWidth(), text.width());
}

TEST_F(QtParts, ALargerDialogHasMoreRoomForTheMouse) {
  dialog.show();
  dialog.resize(800, 600);
  QCoreApplication::processEvents();
  const QWidget& buttons = *dialog.findChild<QDialogButtonBox*>();
  EXPECT_EQ(dialog.layout()->spacing(), buttons.geometry().top() - bar.geometry().bottom() - 1);
}

// Where the longer text was.
TEST_F(QtParts, AShorterTextIsAtTheTop) {
  EXPECT_EQ(Qt::AlignLeft | Qt::AlignTop, dialog.findChild<QLabel*>()->alignment());
}

TEST_F(QtParts, TheNetworkHasAParagraphOfItsOwn) {
  const Dialog remote(gathering, true);
  EXPECT_THAT(remote.findChild<QLabel*>()->text().toStdString(),
              testing::HasSubstr("window.\n\nYou may be connected over a network"));
}

TEST_F(QtParts, KeysAndMotionsThatAnotherProgramSendsAreDropped) {
  UserEvents events(
      gathering, [](int) {}, [] {});
  QAbstractNativeEventFilter& filter = events;
  for (int type = 0; type < 256; ++type) {
    unsigned char event[32] = {static_cast<unsigned char>(type)};
    // KeyPress, KeyRelease, ButtonPress, ButtonRelease and MotionNotify, with the mark of XSendEvent.
    const bool isDropped = type >= 0x82 && type <= 0x86;
    EXPECT_EQ(isDropped, filter.nativeEventFilter("xcb_generic_event_t", event, nullptr)) << type;
  }
}

// Only keys do, until two and a half seconds have passed.
TEST_F(QtParts, TheMouseDoesNotKeepItOpen) {
  dialog.show();
  Complete();
  Update();
  int motions = 0;
  for (; dialog.isVisible() && motions < 25; ++motions) {
    std::this_thread::sleep_for(100ms);
    const QPointF place(motions, motions);
    QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(dialog.windowHandle(), &move);
    QCoreApplication::processEvents();
  }
  EXPECT_GT(10, motions);
  EXPECT_EQ(QDialog::Accepted, dialog.result());
}

TEST_F(QtParts, BarHasTheTextOfTheAlarm) {
  dialog.show();
  Robot robot(1);
  for (int i = 0; i < 1000 && !gathering.HasAlarm(); ++i) {
    KeyPress press = robot.Press();
    press.key = 'a';
    if (i % 3 == 2) press = {press.time, 'q', false};
    gathering.Add(press);
  }
  Update();
  EXPECT_TRUE(Said().starts_with("The input is too regular")) << Said();
  EXPECT_EQ(Said(), Description());
}
