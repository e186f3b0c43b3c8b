#ifndef TESTS_SUPPORT_X_SERVER_H
#define TESTS_SUPPORT_X_SERVER_H

#include <string>
#include <sys/types.h>
#include <vector>

/// An X server without a physical screen, on a free display.
class XServer {
 public:
  /// `options`: more arguments for Xvfb. Throws std::runtime_error when the server does not start.
  explicit XServer(const std::vector<std::string>& options = {});
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;
  ~XServer() { Stop(); }

  void Stop();
  void Send(int signal) const;

  std::string display;

 private:
  pid_t process;
};

#endif
