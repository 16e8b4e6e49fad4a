#include "Media/Confinement.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
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

constexpr std::size_t head = 4;  // instructions before the list
using Program = std::array<sock_filter, head + allowed.size() + 2>;

Program makeFilter() {
  constexpr auto load = static_cast<unsigned short>(BPF_LD | BPF_W | BPF_ABS);
  constexpr auto jumpIfEqual = static_cast<unsigned short>(BPF_JMP | BPF_JEQ | BPF_K);
  constexpr auto answer = static_cast<unsigned short>(BPF_RET | BPF_K);
  Program filter{};
  filter[0] = BPF_STMT(load, offsetof(seccomp_data, arch));
  filter[1] = BPF_JUMP(jumpIfEqual, machine, 1, 0);
  filter[2] = BPF_STMT(answer, SECCOMP_RET_KILL_PROCESS);
  filter[3] = BPF_STMT(load, offsetof(seccomp_data, nr));
  for (std::size_t i = 0; i < allowed.size(); ++i)
    filter[head + i] =
        BPF_JUMP(jumpIfEqual, allowed[i], static_cast<unsigned char>(allowed.size() - i), 0);
  filter[head + allowed.size()] = BPF_STMT(answer, SECCOMP_RET_ERRNO | EPERM);
  filter[head + allowed.size() + 1] = BPF_STMT(answer, SECCOMP_RET_ALLOW);
  return filter;
}

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit limits{most, most};
  ::setrlimit(resource, &limits);
}

}  // namespace

void confine([[maybe_unused]] std::uint64_t memory) {
  constexpr rlim_t hour = 3600;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, hour);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  limit(RLIMIT_AS, memory);
#endif
  if (machine == 0) return;
  Program filter = makeFilter();
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  // A kernel without it decodes all the same: the limits and the allow lists hold.
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

}  // namespace nomely::media
