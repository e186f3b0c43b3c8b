#ifndef TESTS_INTERACTIVE_HOST_PROCESS_H
#define TESTS_INTERACTIVE_HOST_PROCESS_H

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

/// Polls until the condition is true. Returns false after half a minute.
bool WaitUntil(const std::function<bool()>& isTrue);

/// Whether a process uses almost no processor time during the next second.
bool Sleeps(pid_t process);

/// A program that runs in a session of its own, with a terminal or without, so everything it starts can be
/// found. The destructor kills what is left of the session.
class HostProcess {
 public:
  using Words = std::vector<std::string>;

  /// `command`: an absolute path and arguments. `variables`: "NAME=value", the whole environment. `terminal`:
  /// the path of what becomes the controlling terminal, standard input and standard error; "" for none. Then
  /// standard input is /dev/null and standard error goes where standard output goes: it is collected.
  HostProcess(const Words& command, const Words& variables, const std::string& terminal = "");
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;
  ~HostProcess();

  pid_t Get() const { return process; }
  void Send(int signal) const;

  /// Whether the text appears in the output, before the program ends.
  bool Prints(const std::string& text);

  /// Waits until the program has ended (half a minute at most), and returns all of its output.
  const std::string& Finish();

  /// The wait status; -1 while it runs.
  int Status() const { return status; }

  /// The processes of that session other than the program itself: those with that name (at most 15
  /// characters), or all. A dead one counts only if the program has to reap it: the init process of a
  /// container may take its time.
  std::vector<pid_t> Others(const std::string& name = "") const;

  /// Whether none of them is left within half a minute.
  bool IsAlone() const;

 private:
  void ReadOutput();

  pid_t process = 0;
  int outputEnd = -1;
  std::string output;
  int status = -1;
};

#endif
