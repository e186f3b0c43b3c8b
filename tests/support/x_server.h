#ifndef TESTS_SUPPORT_X_SERVER_H
#define TESTS_SUPPORT_X_SERVER_H

#include <string>
#include <sys/types.h>

/// An X server without a physical screen, on a free display.
class XServer {
 public:
  XServer();  ///< throws std::runtime_error when the server does not start
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;
  ~XServer() { Stop(); }

  void Stop();

  std::string display;

 private:
  pid_t process;
};

#endif
