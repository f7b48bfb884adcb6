// Calls of the system that a sandbox withholds. Linux only.
#ifndef OXACORE_TESTS_SUPPORT_SYSTEMCALLFILTER_H
#define OXACORE_TESTS_SUPPORT_SYSTEMCALLFILTER_H

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace TestSupport {

/// The system answers the call `number` with `action`, one of SECCOMP_RET_, for the rest of the process and all its
/// threads. False where that can't be had.
inline bool AnswerSystemCall(int number, unsigned action) {
  sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, action),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter = {4, program};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &filter) == 0;
}

}  // namespace TestSupport

#endif
