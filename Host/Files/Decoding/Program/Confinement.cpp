// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/Program/Confinement.h"

#include <fcntl.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Host/Files/Decoding/Messages.h"
#include "Host/Files/Decoding/Program/FileTrap.h"
#include "Host/Files/Decoding/Program/FilterProgram.h"

namespace ScEng {
namespace {

constexpr std::uint32_t kAllow = SECCOMP_RET_ALLOW;
constexpr std::uint32_t kTrap = SECCOMP_RET_TRAP;
constexpr std::uint32_t kKill = SECCOMP_RET_KILL_PROCESS;
constexpr std::uint32_t kAll = 0xFFFFFFFF;

constexpr std::uint32_t Fail(int error) { return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error); }

// Memory, threads, time, and reading of what is open already.
constexpr long kAllowed[] = {
    SYS_read,
    SYS_readv,
    SYS_pread64,
    SYS_preadv,
    SYS_write,
    SYS_writev,
    SYS_lseek,
    SYS_close,
    SYS_fstat,
    SYS_fstatfs,
    SYS_getdents64,
    SYS_dup,
    SYS_fadvise64,
    SYS_readahead,
    SYS_munmap,
    SYS_mremap,
    SYS_madvise,
    SYS_mincore,
    SYS_brk,
    SYS_msync,
    SYS_futex,
    SYS_membarrier,
    SYS_rseq,
    SYS_set_robust_list,
    SYS_get_robust_list,
    SYS_set_tid_address,
    SYS_exit,
    SYS_exit_group,
    SYS_rt_sigaction,
    SYS_rt_sigprocmask,
    SYS_rt_sigreturn,
    SYS_rt_sigtimedwait,
    SYS_rt_sigpending,
    SYS_sigaltstack,
    SYS_restart_syscall,
    SYS_gettid,
    SYS_getpid,
    SYS_getppid,
    SYS_getuid,
    SYS_geteuid,
    SYS_getgid,
    SYS_getegid,
    SYS_getcwd,
    SYS_sched_yield,
    SYS_sched_getaffinity,
    SYS_sched_setaffinity,
    SYS_sched_getparam,
    SYS_sched_getscheduler,
    SYS_sched_get_priority_max,
    SYS_sched_get_priority_min,
    SYS_getcpu,
    SYS_clock_gettime,
    SYS_clock_getres,
    SYS_clock_nanosleep,
    SYS_nanosleep,
    SYS_gettimeofday,
    SYS_times,
    SYS_getrusage,
    SYS_sysinfo,
    SYS_uname,
    SYS_getrandom,
    SYS_pipe2,
    SYS_ppoll,
    SYS_pselect6,
#if defined(__x86_64__)
    SYS_dup2,
    SYS_getdents,
    SYS_poll,
    SYS_select,
    SYS_time,
    SYS_getrlimit,
    SYS_pipe,
#endif
};

// What needs a path is asked for on the broker's socket.
constexpr long kTrapped[] = {
    SYS_openat, SYS_newfstatat, SYS_faccessat, SYS_faccessat2, SYS_readlinkat,
#if defined(__x86_64__)
    SYS_open,   SYS_stat,       SYS_lstat,     SYS_access,     SYS_readlink,
#endif
};

// The C library does without these where they are missing.
constexpr long kMissing[] = {SYS_clone3, SYS_statx, SYS_openat2, SYS_close_range, SYS_copy_file_range};

// No library of image formats has a use for these: who calls them is not reading a picture.
constexpr long kFatal[] = {
    SYS_execve,
    SYS_execveat,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_unshare,
    SYS_setns,
    SYS_bpf,
    SYS_kexec_load,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_perf_event_open,
    SYS_userfaultfd,
    SYS_add_key,
    SYS_keyctl,
    SYS_request_key,
    SYS_reboot,
    SYS_setuid,
    SYS_setgid,
    SYS_setresuid,
    SYS_setresgid,
};

/// Threads of this process, but no new processes and no rooms of their own.
void AddThreads(FilterProgram& filter) {
  constexpr std::uint32_t kThread = CLONE_THREAD | CLONE_VM | CLONE_SIGHAND;
  constexpr std::uint32_t kRooms =
      CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
  filter.AnswerByArgument(SYS_clone, 0, kThread | kRooms, {kThread}, kAllow, Fail(EPERM));
  // A process that aborts sends the signal to itself.
  filter.AnswerByArgument(SYS_tgkill, 0, kAll, {static_cast<std::uint32_t>(getpid())}, kAllow, Fail(EPERM));
}

/// Memory that is not code. Shared memory without a file counts for no limit but that of addresses.
void AddMemory(FilterProgram& filter) {
  filter.AnswerByArgument(SYS_mprotect, 2, PROT_EXEC, {0}, kAllow, Fail(EPERM));
  filter.AnswerMapping(PROT_EXEC, MAP_SHARED | MAP_ANONYMOUS, Fail(EPERM));
}

void AddDescriptors(FilterProgram& filter) {
  for (const long call : {SYS_sendmsg, SYS_recvmsg, SYS_sendto, SYS_recvfrom}) {
    filter.AnswerByArgument(call, 0, kAll, {kControlSocket, kBrokerSocket}, kAllow, Fail(EPERM));
  }
  filter.AnswerByArgument(SYS_fcntl, 1, kAll,
                          {F_GETFD, F_SETFD, F_GETFL, F_DUPFD, F_DUPFD_CLOEXEC, F_GETLK, F_SETLK, F_OFD_SETLK}, kAllow,
                          Fail(EPERM));
  filter.Answer(SYS_ioctl, Fail(ENOTTY));
}

void AddSettings(FilterProgram& filter) {
  filter.AnswerByArgument(SYS_prctl, 0, kAll, {PR_SET_NAME, PR_GET_NAME, PR_GET_DUMPABLE}, kAllow, Fail(EPERM));
  filter.AnswerIfZero(SYS_prlimit64, 2, kAllow, Fail(EPERM));
}

}  // namespace

void LimitProcess() {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  constexpr rlim_t kMostOpenFiles = 256;
  const rlimit none{0, 0};
  const rlimit few{kMostOpenFiles, kMostOpenFiles};
  setrlimit(RLIMIT_CORE, &none);
  setrlimit(RLIMIT_FSIZE, &none);
  setrlimit(RLIMIT_NOFILE, &few);
}

bool ConfineProcess() {
  if (!CatchFileCalls()) return false;
  FilterProgram filter;
  for (const long call : kAllowed) filter.Answer(call, kAllow);
  for (const long call : kTrapped) filter.Answer(call, kTrap);
  for (const long call : kMissing) filter.Answer(call, Fail(ENOSYS));
  for (const long call : kFatal) filter.Answer(call, kKill);
  AddThreads(filter);
  AddMemory(filter);
  AddDescriptors(filter);
  AddSettings(filter);
  filter.AnswerOthers(Fail(EPERM));
  return filter.Install();
}

}  // namespace ScEng
