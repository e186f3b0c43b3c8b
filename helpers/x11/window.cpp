#include "helpers/x11/window.h"

#include "helpers/session/monotonic_clock.h"
#include "helpers/x11/properties.h"

#include <X11/Xlib.h>
#include <X11/Xproto.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <cairo-xlib.h>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace {

// Setting the focus fails, without harm, if the window is hidden at that moment.
int ExitOnError(Display*, XErrorEvent* error) {
  if (error->request_code != X_SetInputFocus) std::exit(1);
  return 0;
}

Display* Open() {
  XSetErrorHandler(ExitOnError);
  Display* const display = XOpenDisplay(nullptr);
  if (!display) throw std::runtime_error("The display cannot be opened.");
  return display;
}

// Only a window manager selects SubstructureRedirect on the root window.
bool HasWindowManager(Display* display) {
  XWindowAttributes root = {};
  XGetWindowAttributes(display, DefaultRootWindow(display), &root);
  return (root.all_event_masks & SubstructureRedirectMask) != 0;
}

}  // namespace

class UserWindow::Connection {
 public:
  Connection(const std::string& title, const Picture& picture)
      : display(Open()),
        placement(FindPlacement(display, picture)),
        window(Create()),
        surface(cairo_xlib_surface_create(display, window, DefaultVisual(display, Screen()),
                                          placement.width, placement.height)),
        context(cairo_create(surface)) {
    closing = Describe(display, window, title, placement);
    XMapWindow(display, window);
    Show(picture);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    XCloseDisplay(display);
  }

  int Get() const { return ConnectionNumber(display); }
  bool TakeRefusal() { return std::exchange(isRefused, false); }

  std::vector<UserInput> Read() {
    std::vector<UserInput> inputs;
    while (XPending(display) > 0) {
      XEvent event;
      XNextEvent(display, &event);
      Take(event, inputs);
    }
    return inputs;
  }

  void Show(const Picture& picture) {
    if (!isStale && picture == shown) return;
    shown = picture;
    isStale = false;
    // As a group, so that no half-painted picture shows.
    cairo_push_group(context);
    Paint(context, picture, placement.width, placement.height, placement.fontSize);
    cairo_pop_group_to_source(context);
    cairo_paint(context);
    cairo_surface_flush(surface);
    XFlush(display);
  }

 private:
  int Screen() const { return DefaultScreen(display); }

  // Button events are not selected, because the server would grab the pointer while a button is down. They must not
  // reach the windows behind, either.
  Window Create() const {
    XSetWindowAttributes attributes = {};
    attributes.background_pixel = WhitePixel(display, Screen());
    attributes.bit_gravity = NorthWestGravity;
    attributes.event_mask = KeyPressMask | PointerMotionMask | ExposureMask | StructureNotifyMask;
    attributes.do_not_propagate_mask = KeyReleaseMask | ButtonPressMask | ButtonReleaseMask;
    return XCreateWindow(display, RootWindow(display, Screen()), placement.x, placement.y,
                         static_cast<unsigned>(placement.width),
                         static_cast<unsigned>(placement.height), 0, CopyFromParent, InputOutput,
                         CopyFromParent, CWBackPixel | CWBitGravity | CWEventMask | CWDontPropagate,
                         &attributes);
  }

  void Take(XEvent& event, std::vector<UserInput>& inputs) {
    switch (event.type) {
      case KeyPress:
        return TakePress(event.xkey, inputs);
      case MotionNotify:
        return TakeMotion(event.xmotion, inputs);
      case Expose:
        isStale = true;
        return;
      case ConfigureNotify:
        return Resize(event.xconfigure);
      case MapNotify:
        return TakeFocus();
      case MappingNotify:
        XRefreshKeyboardMapping(&event.xmapping);
        return;
      case DestroyNotify:
        isRefused = true;
        return;
      case ClientMessage:
        return TakeMessage(event.xclient);
    }
  }

  void TakeMessage(const XClientMessageEvent& event) {
    const bool closes =
        event.message_type == closing.type && static_cast<Atom>(event.data.l[0]) == closing.word;
    if (closes) isRefused = true;
  }

  void TakePress(XKeyEvent& event, std::vector<UserInput>& inputs) {
    if (event.send_event) return;
    inputs.push_back(
        {UserInput::kPress, MonotonicNow(), event.keycode, event.x, event.y, event.time});
    if (XLookupKeysym(&event, 0) == XK_Escape) isRefused = true;
  }

  static void TakeMotion(const XMotionEvent& event, std::vector<UserInput>& inputs) {
    if (event.send_event) return;
    inputs.push_back(
        {UserInput::kMotion, MonotonicNow(), event.state, event.x, event.y, event.time});
  }

  void Resize(const XConfigureEvent& event) {
    if (event.width == placement.width && event.height == placement.height) return;
    placement.width = event.width;
    placement.height = event.height;
    cairo_xlib_surface_set_size(surface, event.width, event.height);
    isStale = true;
  }

  void TakeFocus() {
    if (HasWindowManager(display)) return;
    XSetInputFocus(display, window, RevertToPointerRoot, CurrentTime);
  }

  Display* display;
  Placement placement;
  Window window;
  cairo_surface_t* surface;
  cairo_t* context;
  ClosingMessage closing = {};
  Picture shown;
  bool isStale = true;
  bool isRefused = false;
};

UserWindow::UserWindow(const std::string& title, const Picture& picture)
    : connection(std::make_unique<Connection>(title, picture)) {}

UserWindow::~UserWindow() = default;

int UserWindow::Get() const { return connection->Get(); }
std::vector<UserInput> UserWindow::Read() { return connection->Read(); }
bool UserWindow::TakeRefusal() { return connection->TakeRefusal(); }
void UserWindow::Show(const Picture& picture) { connection->Show(picture); }
