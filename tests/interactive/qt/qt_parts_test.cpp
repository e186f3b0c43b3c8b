// What a screen reader gets from the dialog of "bioqt".

#include "helpers/qt/dialog.h"
#include "tests/gathering/robot.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QWindow>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

class QtAccessibility : public testing::Test {
 protected:
  static int& Platform(int& count) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    return count;
  }

  // As if the user had pressed another key.
  void Update() {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QCoreApplication::sendEvent(dialog.windowHandle(), &press);
  }

  std::string Said() const { return dialog.findChild<QLabel*>()->text().toStdString(); }
  std::string Description() const { return bar.accessibleDescription().toStdString(); }

  int count = 1;
  char name[5] = "test";
  char* arguments[2] = {name, nullptr};
  QApplication application{Platform(count), arguments};
  Gathering gathering{SystemBytes(), false};
  Dialog dialog{gathering, false};
  const QProgressBar& bar = *dialog.findChild<QProgressBar*>();
};

}  // namespace

TEST_F(QtAccessibility, BarHasANameAndTheTextOfTheDialog) {
  dialog.show();
  QCoreApplication::processEvents();
  EXPECT_TRUE(bar.hasFocus());
  EXPECT_EQ("Progress", bar.accessibleName().toStdString());
  EXPECT_TRUE(Said().starts_with("Move the mouse around")) << Said();
  EXPECT_EQ(Said(), Description());

  Robot robot(1);
  while (!gathering.IsComplete()) gathering.Add(robot.Press());
  Update();
  EXPECT_EQ("That is enough. Please stop typing.", Said());
  EXPECT_EQ(Said(), Description());
}

TEST_F(QtAccessibility, BarHasTheTextOfTheAlarm) {
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
