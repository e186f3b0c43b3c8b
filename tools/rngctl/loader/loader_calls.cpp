#include "tools/rngctl/loader/loader_calls.h"

#include <atomic>
#include <dlfcn.h>
#include <link.h>

#include <rngaggregator/aggregator.h>

namespace {

std::atomic<const LoaderObserver*> g_observer;

Dl_info PlaceOf(const void* code) {
  Dl_info info = {};
  ::dladdr(code, &info);
  return info;
}

// "" if the handle belongs to no open library: a plug-in may close a handle twice.
std::string FileOfHandle(const void* handle) {
  for (const link_map* map = _r_debug.r_map; map; map = map->l_next) {
    if (map == handle) return map->l_name;
  }
  return "";
}

void* RefuseToOpen(const char*, int) { return nullptr; }

}  // namespace

bool LoaderCaller::IsLibrary() const {
  return PlaceOf(place).dli_fbase ==
         PlaceOf(reinterpret_cast<const void*>(&GetDefaultSettings)).dli_fbase;
}

std::string LoaderCaller::File() const {
  const Dl_info info = PlaceOf(place);
  return info.dli_fname ? info.dli_fname : "";
}

void WatchLoaderCalls(const LoaderObserver* observer) { g_observer = observer; }

// Called by the two functions below, so they keep C names. Each returns the function to jump to.
extern "C" {

__attribute__((used)) void* RngctlNoteOpening(const char* file, const void* caller) {
  const LoaderObserver* const observer = g_observer;
  if (observer && file && !observer->mayOpen(file, {caller})) {
    return reinterpret_cast<void*>(&RefuseToOpen);
  }
  return ::dlsym(RTLD_NEXT, "dlopen");
}

__attribute__((used)) void* RngctlNoteClosing(const void* handle, const void* caller) {
  if (const LoaderObserver* const observer = g_observer) {
    observer->closes(FileOfHandle(handle), {caller});
  }
  return ::dlsym(RTLD_NEXT, "dlclose");
}

// In assembly, because a call would put this program in the caller's place. The arguments are saved, the
// stack is aligned for the call, and the jump leaves both as they were.
__attribute__((naked, visibility("default"))) void* dlopen(const char*, int) noexcept {
  asm("endbr64\n\t"
      "push %rdi\n\t"
      "push %rsi\n\t"
      "mov 16(%rsp), %rsi\n\t"
      "sub $8, %rsp\n\t"
      "call RngctlNoteOpening\n\t"
      "add $8, %rsp\n\t"
      "pop %rsi\n\t"
      "pop %rdi\n\t"
      "jmp *%rax");
}

__attribute__((naked, visibility("default"))) int dlclose(void*) noexcept {
  asm("endbr64\n\t"
      "push %rdi\n\t"
      "mov 8(%rsp), %rsi\n\t"
      "call RngctlNoteClosing\n\t"
      "pop %rdi\n\t"
      "jmp *%rax");
}
}
