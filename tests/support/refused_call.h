#ifndef TESTS_SUPPORT_REFUSED_CALL_H
#define TESTS_SUPPORT_REFUSED_CALL_H

#include <cstddef>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

/// From now on, a system call with this value of that argument fails with `error`, as in a sandbox or with an older
/// kernel. Calls with another value succeed. False if this process may not set such a filter.
inline bool RefuseCall(unsigned call, unsigned error, int argument, unsigned value) {
  const auto offset = static_cast<unsigned>(offsetof(seccomp_data, args) + 8U * argument);
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {std::size(steps), steps};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

#endif
