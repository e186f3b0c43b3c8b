#ifndef TOOLS_RNGCTL_PROCESS_DESCRIPTOR_H
#define TOOLS_RNGCTL_PROCESS_DESCRIPTOR_H

#include <unistd.h>
#include <utility>

/// Owns a file descriptor; -1 for none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : value(number) {}
  Descriptor(Descriptor&& other) noexcept : value(std::exchange(other.value, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value, other.value);
    return *this;
  }
  ~Descriptor() { Close(); }

  void Close() {
    if (value >= 0) ::close(value);
    value = -1;
  }
  int Get() const { return value; }

 private:
  int value = -1;
};

#endif
