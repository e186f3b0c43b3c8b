#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_BUFFER_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_GUARDED_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <vector>

/// A buffer for a plug-in to write into, between two guards that show writes outside it.
class GuardedBuffer {
 public:
  GuardedBuffer(std::size_t bytes, unsigned char fill, unsigned char guardByte = 0xC3)
      : size(bytes), guard(guardByte), memory(bytes + 2 * kGuardSize, guardByte) {
    std::fill_n(Data(), size, fill);
  }
  explicit GuardedBuffer(const std::vector<unsigned char>& contents)
      : GuardedBuffer(contents.size(), 0) {
    std::copy(contents.begin(), contents.end(), Data());
  }

  unsigned char* Data() { return memory.data() + kGuardSize; }
  const unsigned char* Data() const { return memory.data() + kGuardSize; }
  std::size_t Size() const { return size; }

  bool ContainsOnly(unsigned char byte) const {
    return std::count(Data(), Data() + size, byte) == static_cast<std::ptrdiff_t>(size);
  }
  bool IsIntactAround() const {
    return std::count(memory.data(), Data(), guard) == kGuardSize &&
           std::count(Data() + size, memory.data() + memory.size(), guard) == kGuardSize;
  }

 private:
  static constexpr std::ptrdiff_t kGuardSize = 256;
  std::size_t size;
  unsigned char guard;
  std::vector<unsigned char> memory;
};

#endif
