#include "Media/Confinement.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <vector>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

namespace nomely::media {
namespace {

#if defined(__x86_64__)
constexpr unsigned machine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr unsigned machine = AUDIT_ARCH_AARCH64;
#else
constexpr unsigned machine = 0;
#endif

// Calls that reading, decoding, writing and ending are made of. Every other one fails.
constexpr auto allowed = std::to_array<unsigned>({
    SYS_read,        SYS_write,         SYS_pread64,      SYS_pwrite64,
    SYS_readv,       SYS_writev,        SYS_lseek,        SYS_fstat,
    SYS_close,       SYS_fsync,         SYS_fdatasync,    SYS_ftruncate,
    SYS_mmap,        SYS_munmap,        SYS_mremap,       SYS_mprotect,
    SYS_madvise,     SYS_brk,           SYS_futex,        SYS_exit,
    SYS_exit_group,  SYS_rt_sigaction,  SYS_rt_sigreturn, SYS_rt_sigprocmask,
    SYS_sigaltstack, SYS_clock_gettime, SYS_getrandom,    SYS_sched_yield,
    SYS_getpid,      SYS_gettid,        SYS_tgkill,       SYS_sched_getaffinity,
    SYS_newfstatat,
    SYS_pipe2,  // sanitizers try addresses with one
#ifdef SYS_pipe
    SYS_pipe,
#endif
});

// And what a thread begins with.
constexpr auto allowedOfThreads = std::to_array<unsigned>({SYS_rseq, SYS_set_robust_list});

using Program = std::vector<sock_filter>;

Program makeFilter(Threads threads) {
  constexpr auto load = static_cast<unsigned short>(BPF_LD | BPF_W | BPF_ABS);
  constexpr auto jumpIfEqual = static_cast<unsigned short>(BPF_JMP | BPF_JEQ | BPF_K);
  constexpr auto answer = static_cast<unsigned short>(BPF_RET | BPF_K);
  constexpr auto jumpIfSet = static_cast<unsigned short>(BPF_JMP | BPF_JSET | BPF_K);
  Program filter{
      BPF_STMT(load, offsetof(seccomp_data, arch)),
      BPF_JUMP(jumpIfEqual, machine, 1, 0),
      BPF_STMT(answer, SECCOMP_RET_KILL_PROCESS),
      BPF_STMT(load, offsetof(seccomp_data, nr)),
  };
  std::vector<unsigned> calls(allowed.begin(), allowed.end());
  if (threads == Threads::some) {
    calls.insert(calls.end(), allowedOfThreads.begin(), allowedOfThreads.end());
    // What clone3 is asked for lies in memory, out of the filter's sight; where a kernel lacks it,
    // clone is called.
    const Program more{
        BPF_JUMP(jumpIfEqual, SYS_clone3, 0, 1),     BPF_STMT(answer, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_JUMP(jumpIfEqual, SYS_clone, 0, 4),      BPF_STMT(load, offsetof(seccomp_data, args)),
        BPF_JUMP(jumpIfSet, CLONE_THREAD, 0, 1),     BPF_STMT(answer, SECCOMP_RET_ALLOW),
        BPF_STMT(answer, SECCOMP_RET_ERRNO | EPERM),
    };
    filter.insert(filter.end(), more.begin(), more.end());
  }
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const sock_filter jump =
        BPF_JUMP(jumpIfEqual, calls[i], static_cast<unsigned char>(calls.size() - i), 0);
    filter.push_back(jump);
  }
  const Program end{BPF_STMT(answer, SECCOMP_RET_ERRNO | EPERM),
                    BPF_STMT(answer, SECCOMP_RET_ALLOW)};
  filter.insert(filter.end(), end.begin(), end.end());
  return filter;
}

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit limits{most, most};
  ::setrlimit(resource, &limits);
}

}  // namespace

void confine([[maybe_unused]] std::uint64_t memory, Threads threads) {
  constexpr rlim_t hour = 3600;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, hour);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  limit(RLIMIT_AS, memory);
#endif
  if (machine == 0) return;
  Program filter = makeFilter(threads);
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  // A kernel without it decodes all the same: the limits and the allow lists hold.
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

}  // namespace nomely::media
