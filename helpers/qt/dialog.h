#ifndef HELPERS_QT_DIALOG_H
#define HELPERS_QT_DIALOG_H

#include "helpers/qt/user_events.h"

#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

/// Asks the user to move the mouse or type, and shows the progress. It is accepted when there is enough, and
/// rejected if the user cancels or the input raises an alarm.
class Dialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(Dialog)

 public:
  Dialog(Gathering& gathering, bool isRemote);

 private:
  void AddParts();
  void Say(const QString& sentence);
  void ShowState(int key);
  void ShowEnough(int key);
  void ShowAlarm();

  Gathering& gathering;
  QLabel* text;  // the dialog owns its parts
  QProgressBar* bar;
  QPushButton* button;
  QTimer silence;  // runs once there is enough
  QElapsedTimer sinceEnough;
  UserEvents events;
};

#endif
