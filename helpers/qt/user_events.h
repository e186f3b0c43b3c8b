#ifndef HELPERS_QT_USER_EVENTS_H
#define HELPERS_QT_USER_EVENTS_H

#include "helpers/gathering/gathering.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>

class QKeyEvent;
class QMouseEvent;
class QWindow;

/// Adds every key and mouse event in this program's windows to a gathering, whichever widget it is for. The events are
/// then handled as usual.
class UserEvents : public QObject, public QAbstractNativeEventFilter {
 public:
  /// Calls `then` after each event, with the Qt::Key that was pressed, or 0 for the mouse; and `whenLost` if a
  /// window of this program is destroyed, which Qt does not notice if another program does it.
  UserEvents(Gathering& into, std::function<void(int key)> then, std::function<void()> whenLost);
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
  const std::function<void()> whenDestroyed;
  std::uint64_t lastPress = 0;  // the time of the X server, in ms
};

#endif
