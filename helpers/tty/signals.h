#ifndef HELPERS_TTY_SIGNALS_H
#define HELPERS_TTY_SIGNALS_H

/// The signals of a terminal and of those who end programs, as events that are read. They do nothing else.
class Signals {
 public:
  Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  /// Becomes readable when a signal has come.
  int Get() const { return descriptor; }

  /// The number of the next signal, 0 if there is none.
  int Next() const;

 private:
  int descriptor;
};

#endif
