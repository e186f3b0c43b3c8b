#ifndef TOOLS_RNGCTL_PROCESS_FORKED_SECRET_BYTES_H
#define TOOLS_RNGCTL_PROCESS_FORKED_SECRET_BYTES_H

#include <cstring>
#include <memory>
#include <sys/prctl.h>
#include <vector>

/// Wipes memory before giving it back, also when a container grows.
template <typename Value>
struct WipingAllocator {
  using value_type = Value;

  WipingAllocator() = default;
  template <typename Other>
  explicit WipingAllocator(const WipingAllocator<Other>&) {}

  Value* allocate(std::size_t count) { return std::allocator<Value>().allocate(count); }
  void deallocate(Value* place, std::size_t count) {
    ::explicit_bzero(place, count * sizeof(Value));
    std::allocator<Value>().deallocate(place, count);
  }
  bool operator==(const WipingAllocator&) const { return true; }
};

/// Drawn bytes, raw or encoded. Not a string, because short strings do not use the allocator.
using SecretBytes = std::vector<char, WipingAllocator<char>>;

/// While it lives, this process leaves no core dump. A limit on the size of core dumps would not help
/// where the kernel pipes them to a program. Create it before the bytes that it protects.
class NoCore {
 public:
  NoCore() : before(::prctl(PR_GET_DUMPABLE)) { ::prctl(PR_SET_DUMPABLE, 0); }
  NoCore(const NoCore&) = delete;
  NoCore& operator=(const NoCore&) = delete;
  ~NoCore() {
    if (before == 1) ::prctl(PR_SET_DUMPABLE, 1);  // only if dumps were on before
  }

 private:
  const int before;
};

#endif
