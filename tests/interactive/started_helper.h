#ifndef TESTS_INTERACTIVE_STARTED_HELPER_H
#define TESTS_INTERACTIVE_STARTED_HELPER_H

#include "plugins/interactive/request.h"
#include "plugins/interactive/start_helper.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

/// A helper that the test asks itself, as a plug-in does.
class StartedHelper : public testing::Test {
 protected:
  /// So that its status is seen: it is nobody's child.
  explicit StartedHelper(const char* program) : path(program) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  }
  ~StartedHelper() override { ::close(socket); }

  void Ask(HelperRequest::Task task, const std::string& display, std::uint64_t size = 32) {
    ::setenv("DISPLAY", display.c_str(), 1);
    socket = StartHelper(path);
    const HelperRequest request = {task, 0, size};
    ::send(socket, &request, sizeof request, MSG_NOSIGNAL);
  }

  std::string Answer() const {
    char answer[64];
    const ssize_t count = ::recv(socket, answer, sizeof answer, MSG_WAITALL);
    return std::string(answer, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  static int Status() {
    int status = -1;
    ::wait(&status);
    return status;
  }

  const char* path;
  int socket = -1;
};

#endif
