#include "helpers/qt/user_events.h"

#include "helpers/session/monotonic_clock.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>
#include <cmath>
#include <utility>

namespace {

// Codes of the X protocol for key and mouse events. kSent is added if another program has sent the event.
constexpr int kKeyPress = 2;
constexpr int kMotion = 6;
constexpr int kSent = 0x80;
constexpr int kDestroyed = 17;  // of a window

}  // namespace

UserEvents::UserEvents(Gathering& into, std::function<void(int key)> then,
                       std::function<void()> whenLost)
    : gathering(into), whenTaken(std::move(then)), whenDestroyed(std::move(whenLost)) {
  QCoreApplication::instance()->installEventFilter(this);
  QCoreApplication::instance()->installNativeEventFilter(this);
}

UserEvents::~UserEvents() { QCoreApplication::instance()->removeNativeEventFilter(this); }

// Drops the key and mouse events that other programs have sent.
bool UserEvents::nativeEventFilter(const QByteArray&, void* event, qintptr*) {
  const int code = *static_cast<const unsigned char*>(event);
  if (code == kDestroyed) whenDestroyed();
  return code >= (kSent | kKeyPress) && code <= (kSent | kMotion);
}

// Only events for a window: each passes there once, whether or not a widget tracks the mouse. Afterwards Qt sends it
// to one widget after another until one accepts it.
bool UserEvents::eventFilter(QObject* receiver, QEvent* event) {
  if (!receiver->isWindowType()) return false;
  const Time now = MonotonicNow();
  switch (event->type()) {
    case QEvent::KeyPress:
      Take(static_cast<const QKeyEvent&>(*event), now);
      break;
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
      Take(static_cast<const QMouseEvent&>(*event), static_cast<const QWindow&>(*receiver), now);
      break;
    default:
      break;
  }
  return false;
}

// Presses with the same server time arrived together, however long this program took to read them.
void UserEvents::Take(const QKeyEvent& event, Time now) {
  gathering.Add(KeyPress{now, event.nativeScanCode(), event.timestamp() != lastPress});
  lastPress = event.timestamp();
  whenTaken(event.key());
}

// In device pixels: Qt's own are larger on a high-resolution screen.
void UserEvents::Take(const QMouseEvent& event, const QWindow& window, Time now) {
  const QPointF place = event.scenePosition() * window.devicePixelRatio();
  gathering.Add(Motion{now, static_cast<std::int32_t>(std::lround(place.x())),
                       static_cast<std::int32_t>(std::lround(place.y())),
                       static_cast<std::uint32_t>(event.buttons())});
  whenTaken(0);
}
