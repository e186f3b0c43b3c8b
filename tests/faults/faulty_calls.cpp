// What stands in for the calls of the library under test (the linker's --wrap). Nothing here may
// allocate: it would be taken for an allocation of the library.

#include "tests/faults/fault_plan.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <pthread.h>
#include <stdio_ext.h>
#include <sys/types.h>

namespace {

bool Fails(const char* function, int error) {
  if (!Faults().Strikes(function)) return false;
  errno = error;
  return true;
}

}  // namespace

extern "C" {

void* __real_dlopen(const char* file, int mode);
void* __wrap_dlopen(const char* file, int mode) {
  // Refused by the loader itself, so that its error text is there as well.
  return __real_dlopen(Fails("dlopen", 0) ? "/no/such/library" : file, mode);
}

void* __real_dlsym(void* handle, const char* name);
void* __wrap_dlsym(void* handle, const char* name) {
  return __real_dlsym(handle, Fails("dlsym", 0) ? "no such function" : name);
}

char* __real_dlerror();
char* __wrap_dlerror() {
  static char text[] = "injected";
  char* const real = __real_dlerror();
  return Fails("dlerror", 0) ? text : real;
}

int __real_dlclose(void* handle);
int __wrap_dlclose(void* handle) {
  if (!Fails("dlclose", 0)) return __real_dlclose(handle);
  LeaveUnclosed(handle);
  return -1;
}

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  return Fails("pthread_mutex_lock", 0) ? Faults().lockResult : __real_pthread_mutex_lock(mutex);
}

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
  const bool isReading = mode[0] == 'r';
  if (Fails(isReading ? "fopen r" : "fopen w", EACCES)) return nullptr;
  return __real_fopen(RealPath(path), mode);
}

char* __real_fgets(char* buffer, int size, std::FILE* file);
char* __wrap_fgets(char* buffer, int size, std::FILE* file) {
  return Fails("fgets", EIO) ? nullptr : __real_fgets(buffer, size, file);
}

int __real_getc(std::FILE* file);
int __wrap_getc(std::FILE* file) { return Fails("getc", EIO) ? EOF : __real_getc(file); }

int __wrap_fprintf(std::FILE* file, const char* format, ...) __attribute__((format(printf, 2, 3)));
int __wrap_fprintf(std::FILE* file, const char* format, ...) {
  if (Fails("write", ENOSPC)) return -1;
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vfprintf(file, format, arguments);
  va_end(arguments);
  return written;
}

// What fprintf becomes with _FORTIFY_SOURCE.
int __wrap___fprintf_chk(std::FILE* file, int flag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int __wrap___fprintf_chk(std::FILE* file, int /*flag*/, const char* format, ...) {
  if (Fails("write", ENOSPC)) return -1;
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vfprintf(file, format, arguments);
  va_end(arguments);
  return written;
}

int __real_fputc(int c, std::FILE* file);
int __wrap_fputc(int c, std::FILE* file) {
  return Fails("write", ENOSPC) ? EOF : __real_fputc(c, file);
}

int __real_fputs(const char* text, std::FILE* file);
int __wrap_fputs(const char* text, std::FILE* file) {
  return Fails("write", ENOSPC) ? EOF : __real_fputs(text, file);
}

std::size_t __real_fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* file) {
  return Fails("write", ENOSPC) ? 0 : __real_fwrite(from, size, count, file);
}

int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file) {
  const bool isWriting = ::__fwritable(file) != 0;
  if (!Fails(isWriting ? "fclose w" : "fclose r", EIO)) return __real_fclose(file);
  ::__fpurge(file);  // what it still held is lost
  __real_fclose(file);
  return EOF;
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  return Fails("unlink", EACCES) ? -1 : __real_unlink(RealPath(path));
}

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
  return Fails("rename", EACCES) ? -1 : __real_rename(RealPath(from), RealPath(to));
}

int __real_access(const char* path, int mode);
int __wrap_access(const char* path, int mode) {
  return Fails("access", EACCES) ? -1 : __real_access(RealPath(path), mode);
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
  return Fails("mkdir", EACCES) ? -1 : __real_mkdir(RealPath(path), mode);
}

void* __real__Znwm(std::size_t size);
void* __wrap__Znwm(std::size_t size) {
  if (Faults().Strikes("operator new")) throw std::bad_alloc();
  void* const memory = __real__Znwm(size);
  ++Faults().alive;
  return memory;
}

void* __real__Znam(std::size_t size);
void* __wrap__Znam(std::size_t size) {
  if (Faults().Strikes("operator new")) throw std::bad_alloc();
  void* const memory = __real__Znam(size);
  ++Faults().alive;
  return memory;
}

void __real__ZdlPv(void* memory);
void __wrap__ZdlPv(void* memory) {
  Faults().alive -= memory != nullptr;
  __real__ZdlPv(memory);
}

void __real__ZdlPvm(void* memory, std::size_t size);
void __wrap__ZdlPvm(void* memory, std::size_t size) {
  Faults().alive -= memory != nullptr;
  __real__ZdlPvm(memory, size);
}

void __real__ZdaPv(void* memory);
void __wrap__ZdaPv(void* memory) {
  Faults().alive -= memory != nullptr;
  __real__ZdaPv(memory);
}

void __real__ZdaPvm(void* memory, std::size_t size);
void __wrap__ZdaPvm(void* memory, std::size_t size) {
  Faults().alive -= memory != nullptr;
  __real__ZdaPvm(memory, size);
}

}  // extern "C"
