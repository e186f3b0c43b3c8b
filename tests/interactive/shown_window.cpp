#include "tests/interactive/shown_window.h"

#include "tests/interactive/host_process.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

// Windows may disappear at any time.
int IgnoreError(Display*, XErrorEvent*) { return 0; }

}  // namespace

void SetResources(const std::string& server, const std::string& resources) {
  Display* const display = XOpenDisplay(server.c_str());
  if (!display) throw std::runtime_error("no display " + server);
  XChangeProperty(display, DefaultRootWindow(display), XA_RESOURCE_MANAGER, XA_STRING, 8,
                  PropModeReplace, reinterpret_cast<const unsigned char*>(resources.data()),
                  static_cast<int>(resources.size()));
  XCloseDisplay(display);
}

WindowManager::WindowManager(const std::string& server) : display(XOpenDisplay(server.c_str())) {
  if (!display) throw std::runtime_error("no display " + server);
  XSelectInput(display, DefaultRootWindow(display), SubstructureRedirectMask);
  XSync(display, False);
}

WindowManager::~WindowManager() { XCloseDisplay(display); }

bool WindowManager::ShowNext() {
  return WaitUntil([this] {
    XEvent event;
    if (!XCheckTypedEvent(display, MapRequest, &event)) return false;
    XMapWindow(display, event.xmaprequest.window);
    XSync(display, False);
    return true;
  });
}

ShownWindow::ShownWindow(const std::string& server, const std::string& name)
    : display(XOpenDisplay(server.c_str())), title(name) {
  if (!display) throw std::runtime_error("no display " + server);
  XSetErrorHandler(IgnoreError);
}

ShownWindow::~ShownWindow() { Leave(); }

void ShownWindow::Leave() {
  if (display) XCloseDisplay(display);
  display = nullptr;
}

std::vector<unsigned long> ShownWindow::Find() {
  Window root = 0;
  Window parent = 0;
  Window* children = nullptr;
  unsigned count = 0;
  std::vector<unsigned long> found;
  XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count);
  for (unsigned i = 0; i < count; ++i) {
    XWindowAttributes attributes = {};
    char* name = nullptr;
    if (XFetchName(display, children[i], &name) && name == title &&
        XGetWindowAttributes(display, children[i], &attributes) &&
        attributes.map_state == IsViewable) {
      found.push_back(children[i]);
    }
    if (name) XFree(name);
  }
  if (children) XFree(children);
  return found;
}

bool ShownWindow::Appears() {
  return WaitUntil([this] {
    const std::vector<unsigned long> found = Find();
    if (!found.empty()) window = found[0];
    return !found.empty();
  });
}

bool ShownWindow::Disappears() {
  return WaitUntil([this] {
    const std::vector<unsigned long> found = Find();
    return std::find(found.begin(), found.end(), window) == found.end();
  });
}

bool ShownWindow::HasFocus() {
  Window focus = 0;
  int next = 0;
  XGetInputFocus(display, &focus, &next);
  return focus == window;
}

bool ShownWindow::GetsFocus() {
  return WaitUntil([this] { return HasFocus(); });
}

int ShownWindow::Count() { return static_cast<int>(Find().size()); }

ShownWindow::Area ShownWindow::Place() {
  XWindowAttributes attributes = {};
  XGetWindowAttributes(display, window, &attributes);
  return {attributes.x, attributes.y, attributes.width, attributes.height};
}

std::vector<unsigned long> ShownWindow::Pixels() {
  const Area area = Place();
  XImage* const image = XGetImage(display, window, 0, 0, static_cast<unsigned>(area.width),
                                  static_cast<unsigned>(area.height), AllPlanes, ZPixmap);
  if (!image) return {};
  std::vector<unsigned long> pixels;
  for (int y = 0; y < area.height; ++y) {
    for (int x = 0; x < area.width; ++x) pixels.push_back(XGetPixel(image, x, y) & 0xFFFFFF);
  }
  XDestroyImage(image);
  return pixels;
}

int ShownWindow::CountInRow(unsigned long colour) {
  const auto pixels = Pixels();
  const auto width = static_cast<std::size_t>(Place().width);
  if (width == 0) return 0;  // it has been closed
  std::ptrdiff_t most = 0;
  for (std::size_t row = 0; row + width <= pixels.size(); row += width) {
    const auto begin = pixels.begin() + static_cast<std::ptrdiff_t>(row);
    most = std::max(most, std::count(begin, begin + static_cast<std::ptrdiff_t>(width), colour));
  }
  return static_cast<int>(most);
}

std::string ShownWindow::Property(const std::string& name) {
  Atom type = 0;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* value = nullptr;
  XGetWindowProperty(display, window, XInternAtom(display, name.c_str(), False), 0, 1024, False,
                     AnyPropertyType, &type, &format, &count, &rest, &value);
  std::string text;
  if (value && format == 8) text.assign(reinterpret_cast<char*>(value), count);
  if (value && format == 32 && type == XA_ATOM) {
    for (unsigned long i = 0; i < count; ++i) {
      char* const atom = XGetAtomName(display, reinterpret_cast<Atom*>(value)[i]);
      text += (i > 0 ? " " : "") + std::string(atom ? atom : "?");
      if (atom) XFree(atom);
    }
  }
  if (value) XFree(value);
  return text;
}

void ShownWindow::PretendEscape() {
  XEvent event = {};
  event.xkey.type = KeyPress;
  event.xkey.window = window;
  event.xkey.root = DefaultRootWindow(display);
  event.xkey.same_screen = True;
  event.xkey.keycode = XKeysymToKeycode(display, XK_Escape);
  XSendEvent(display, window, False, KeyPressMask, &event);
  XSync(display, False);
}

void ShownWindow::PretendMotion(int x, int y) {
  std::this_thread::sleep_for(std::chrono::milliseconds(9));
  XEvent event = {};
  event.xmotion.type = MotionNotify;
  event.xmotion.window = window;
  event.xmotion.root = DefaultRootWindow(display);
  event.xmotion.same_screen = True;
  event.xmotion.x = x;
  event.xmotion.y = y;
  XSendEvent(display, window, False, PointerMotionMask, &event);
  XSync(display, False);
}

bool ShownWindow::KeepsClicks() {
  XWindowAttributes attributes = {};
  XGetWindowAttributes(display, window, &attributes);
  constexpr long kClick = ButtonPressMask | ButtonReleaseMask;
  return (attributes.do_not_propagate_mask & kClick) == kClick;
}

bool ShownWindow::AsksForKeys() {
  XWMHints* const hints = XGetWMHints(display, window);
  const bool asks = hints && hints->flags == (InputHint | StateHint) && hints->input &&
                    hints->initial_state == NormalState;
  if (hints) XFree(hints);
  return asks;
}

std::string ShownWindow::SizeHints() {
  XSizeHints hints = {};
  long supplied = 0;
  XGetWMNormalHints(display, window, &hints, &supplied);
  std::string text;
  const auto add = [&text](const std::string& name, int first, int second) {
    text += name + ' ' + std::to_string(first) + ' ' + std::to_string(second) + '\n';
  };
  if ((hints.flags & PSize) != 0) add("size", hints.width, hints.height);
  if ((hints.flags & PMinSize) != 0) add("smallest", hints.min_width, hints.min_height);
  if ((hints.flags & PWinGravity) != 0 && hints.win_gravity == CenterGravity) text += "centre\n";
  return text;
}

// The program reads nothing in between: the server serves this client alone.
void ShownWindow::ShowForAMoment() {
  XGrabServer(display);
  XUnmapWindow(display, window);
  XMapWindow(display, window);
  XUnmapWindow(display, window);
  XUngrabServer(display);
  XSync(display, False);
}

void ShownWindow::Show() {
  XMapWindow(display, window);
  XSync(display, False);
}

void ShownWindow::CoverForAMoment() {
  const Area area = Place();
  XSetWindowAttributes attributes = {};
  attributes.override_redirect = True;
  const Window cover =
      XCreateWindow(display, DefaultRootWindow(display), area.x, area.y,
                    static_cast<unsigned>(area.width), static_cast<unsigned>(area.height), 0,
                    CopyFromParent, InputOutput, CopyFromParent, CWOverrideRedirect, &attributes);
  XMapRaised(display, cover);
  XSync(display, False);
  XDestroyWindow(display, cover);
  XSync(display, False);
}

void ShownWindow::Resize(int width, int height) {
  XResizeWindow(display, window, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XSync(display, False);
}

void ShownWindow::Send(const std::string& type, const std::string& word) {
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, type.c_str(), False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, word.c_str(), False));
  XSendEvent(display, window, False, NoEventMask, &event);
  XSync(display, False);
}

void ShownWindow::Close() { Send("WM_PROTOCOLS", "WM_DELETE_WINDOW"); }

void ShownWindow::Destroy() {
  XDestroyWindow(display, window);
  XSync(display, False);
}

void ShownWindow::Disconnect() {
  XKillClient(display, window);
  XSync(display, False);
}
