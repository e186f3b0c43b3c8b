// Preloaded, it makes the time that a program measures and waits for run thirty times as fast.

#define _GNU_SOURCE
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#define EXPORT __attribute__((visibility("default")))
enum { kFactor = 30 };

EXPORT int clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (clock != CLOCK_MONOTONIC) return result;
  const long long fast = ((long long)now->tv_sec * 1000000000 + now->tv_nsec) * kFactor;
  now->tv_sec = fast / 1000000000;
  now->tv_nsec = fast % 1000000000;
  return result;
}

EXPORT int poll(struct pollfd* events, nfds_t count, int timeout) {
  static int (*next)(struct pollfd*, nfds_t, int);
  if (!next) *(void**)&next = dlsym(RTLD_NEXT, "poll");
  return next(events, count, timeout > 0 ? timeout / kFactor + 1 : timeout);
}

EXPORT int pthread_mutex_clocklock(pthread_mutex_t* lock, clockid_t clock,
                                   const struct timespec* end) {
  static int (*next)(pthread_mutex_t*, clockid_t, const struct timespec*);
  if (!next) *(void**)&next = dlsym(RTLD_NEXT, "pthread_mutex_clocklock");
  const long long slow = ((long long)end->tv_sec * 1000000000 + end->tv_nsec) / kFactor;
  const struct timespec real = {slow / 1000000000, slow % 1000000000};
  return next(lock, clock, &real);
}
