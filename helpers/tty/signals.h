#ifndef HELPERS_TTY_SIGNALS_H
#define HELPERS_TTY_SIGNALS_H

/// The signals that a terminal sends or that terminate programs, read as events. They have no other effect.
class Signals {
 public:
  Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  /// A descriptor that becomes readable when a signal arrives.
  int Get() const { return descriptor; }

  /// Returns the number of the next signal, 0 if there is none.
  int Next() const;

 private:
  int descriptor;
};

#endif
