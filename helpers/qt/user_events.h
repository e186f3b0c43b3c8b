#ifndef HELPERS_QT_USER_EVENTS_H
#define HELPERS_QT_USER_EVENTS_H

#include "helpers/gathering/gathering.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>

class QKeyEvent;
class QMouseEvent;
class QWindow;

/// Takes every event of the user in the windows of this program into a gathering, whichever part of a window
/// it is for. The events then take their usual way.
class UserEvents : public QObject, public QAbstractNativeEventFilter {
 public:
  /// Calls `then` after each event that was taken, with the key that was pressed: a Qt::Key, 0 for the mouse.
  UserEvents(Gathering& into, std::function<void(int key)> then);
  UserEvents(const UserEvents&) = delete;
  UserEvents& operator=(const UserEvents&) = delete;
  ~UserEvents() override;

 private:
  using Time = std::chrono::nanoseconds;

  bool nativeEventFilter(const QByteArray& type, void* event, qintptr*) override;
  bool eventFilter(QObject* receiver, QEvent* event) override;
  void Take(const QKeyEvent& event, Time now);
  void Take(const QMouseEvent& event, const QWindow& window, Time now);

  Gathering& gathering;
  const std::function<void(int key)> whenTaken;
  std::uint64_t lastPress = 0;  // the time of the X server, in ms
};

#endif
