#ifndef TESTS_INTERACTIVE_SHOWN_WINDOW_H
#define TESTS_INTERACTIVE_SHOWN_WINDOW_H

#include <string>
#include <vector>

struct _XDisplay;

/// Sets what programs of a display find in its resource database, as xrdb does.
void SetResources(const std::string& display, const std::string& resources);

/// A minimal window manager: it only shows the windows that ask for it.
class WindowManager {
 public:
  explicit WindowManager(const std::string& display);
  WindowManager(const WindowManager&) = delete;
  WindowManager& operator=(const WindowManager&) = delete;
  ~WindowManager();

  /// Shows the next window; false if none comes within half a minute.
  bool ShowNext();

 private:
  _XDisplay* display;
};

/// A window with that title on a display, as another program sees it.
class ShownWindow {
 public:
  ShownWindow(const std::string& display, const std::string& title);
  ShownWindow(const ShownWindow&) = delete;
  ShownWindow& operator=(const ShownWindow&) = delete;
  ~ShownWindow();

  /// Whether it appears within half a minute. If there are several, this object stands for the first.
  bool Appears();
  /// Whether the window that appeared is gone within half a minute.
  bool Disappears();
  /// Whether keys go to it now, wherever the pointer is.
  bool HasFocus();
  /// Whether keys go to it within half a minute.
  bool GetsFocus();
  int Count();

  struct Area {
    int x;
    int y;
    int width;
    int height;
  };
  Area Place();

  /// The pixels, row by row, as 0xRRGGBB. None if the window is gone.
  std::vector<unsigned long> Pixels();

  /// The most pixels of that colour in one row.
  int CountInRow(unsigned long colour);

  unsigned long Number() const { return window; }
  std::string Property(const std::string& name);  ///< a text, or the names of atoms

  /// Whether a click there means nothing to the windows behind.
  bool KeepsClicks();

  bool AsksForKeys();       ///< whether a window manager may show it and give it the keys
  std::string SizeHints();  ///< for a window manager, a line each

  void PretendEscape();              ///< sends an event that the server did not generate
  void PretendMotion(int x, int y);  ///< some milliseconds after the one before
  void CoverForAMoment();            ///< by another window
  void ShowForAMoment();  ///< hides it, and shows it before it notices, and hides it again
  void Show();            ///< after that
  void Resize(int width, int height);
  void Send(const std::string& type, const std::string& word);  ///< a message of a client
  void Close();       ///< as the button of a window manager does
  void Leave();       ///< ends this object's own connection; call nothing else after that
  void Destroy();     ///< as a hostile program does
  void Disconnect();  ///< closes the program's connection with the server

 private:
  std::vector<unsigned long> Find();

  _XDisplay* display;
  std::string title;
  unsigned long window = 0;
};

#endif
