#ifndef TESTS_INTERACTIVE_SHOWN_WINDOW_H
#define TESTS_INTERACTIVE_SHOWN_WINDOW_H

#include <string>
#include <vector>

struct _XDisplay;

/// Sets what programs of a display find in its resource database, as xrdb does.
void SetResources(const std::string& display, const std::string& resources);

/// A window with that title on a display, as another program sees it. Without a window manager.
class ShownWindow {
 public:
  ShownWindow(const std::string& display, const std::string& title);
  ShownWindow(const ShownWindow&) = delete;
  ShownWindow& operator=(const ShownWindow&) = delete;
  ~ShownWindow();

  /// Whether it is there within half a minute. If there are several, this object stands for the first.
  bool Appears();
  /// Whether the one that appeared is gone within half a minute.
  bool Disappears();
  /// Whether keys go to it within half a minute, wherever the pointer is.
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
  std::string Property(const std::string& name);

  void PretendEscape();  ///< an event that this program makes, not the server
  void Resize(int width, int height);
  void Close();       ///< as the button of a window manager does
  void Leave();       ///< ends this object's own connection: nothing may be asked after that
  void Destroy();     ///< as a hostile program does
  void Disconnect();  ///< closes the program's connection with the server

 private:
  std::vector<unsigned long> Find();

  _XDisplay* display;
  std::string title;
  unsigned long window = 0;
};

#endif
