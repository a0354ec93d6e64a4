// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/Program/FileTrap.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>

#include "Host/Files/Decoding/Messages.h"

namespace ScEng {
namespace {

// Everything here runs in signal handlers: no memory is allocated and no function is called that could be in the middle
// of something in the interrupted thread.

struct Call {
  long number = 0;
  std::array<std::uint64_t, 6> arguments{};
};

template <class Pointer>
Pointer AsPointer(std::uint64_t argument) {
  return reinterpret_cast<Pointer>(static_cast<std::uintptr_t>(argument));
}

/// One question at a time; whoever waits gives its time away.
class BrokerLock {
 public:
  BrokerLock() {
    while (is_taken.test_and_set(std::memory_order_acquire)) syscall(SYS_sched_yield);
  }
  ~BrokerLock() { is_taken.clear(std::memory_order_release); }
  BrokerLock(const BrokerLock&) = delete;
  BrokerLock& operator=(const BrokerLock&) = delete;

 private:
  static inline std::atomic_flag is_taken = ATOMIC_FLAG_INIT;
};

/// The file that came along with its question. Its descriptor is given away once: another one would share its position.
struct HandedFile {
  char path[PATH_MAX] = {};
  int descriptor = -1;
  struct stat status = {};
};
HandedFile handed;

/// Answers for the file that came along; false where it cannot.
bool AnswerFromHand(const FileQuestion& question, struct stat* status, long& answer) {
  if (handed.path[0] == '\0' || std::strcmp(question.path, handed.path) != 0) return false;
  if (question.kind == FileQuestionKind::kStatus) {
    if (status != nullptr) *status = handed.status;
    answer = 0;
    return true;
  }
  if (question.kind != FileQuestionKind::kOpen || handed.descriptor < 0) return false;
  answer = handed.descriptor;
  handed.descriptor = -1;
  return true;
}

/// The whole path in the question; the error where it is none. Relative paths begin at the root, which is this
/// process's folder; those that begin at an open folder are not answered.
int SetPath(FileQuestion& question, int folder, const char* path) {
  if (path == nullptr) return EFAULT;
  const std::size_t length = strnlen(path, sizeof question.path);
  if (length == 0) return ENOENT;
  const bool is_relative = path[0] != '/';
  if (is_relative && folder != AT_FDCWD) return EACCES;
  if (length + (is_relative ? 1 : 0) >= sizeof question.path) return ENAMETOOLONG;
  char* to = question.path;
  if (is_relative) *to++ = '/';
  std::memcpy(to, path, length);
  to[length] = '\0';
  return 0;
}

/// A descriptor or 0, or the error as a negative number.
long Ask(FileQuestionKind kind, int folder, const char* path, struct stat* status) {
  FileQuestion question;
  question.kind = kind;
  if (const int error = SetPath(question, folder, path); error != 0) return -error;
  const std::size_t size = offsetof(FileQuestion, path) + std::strlen(question.path) + 1;
  FileAnswer answer;
  int descriptor = -1;
  ssize_t got = -1;
  {
    const BrokerLock lock;
    if (long from_hand = 0; AnswerFromHand(question, status, from_hand)) return from_hand;
    ssize_t sent = -1;
    do {
      sent = SendWithDescriptor(kBrokerSocket, &question, size, -1, 0);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0) return -EIO;
    do {
      got = ReceiveWithDescriptor(kBrokerSocket, &answer, sizeof answer, descriptor, 0);
    } while (got < 0 && errno == EINTR);
  }
  if (got != sizeof answer) return -EIO;
  if (answer.error != 0) return -answer.error;
  if (status != nullptr) *status = answer.status;
  // An open file that did not come along is one too many for this process.
  if (kind != FileQuestionKind::kStatus) return descriptor >= 0 ? descriptor : -EMFILE;
  return 0;
}

long Open(int folder, const char* path, int flags) {
  if ((flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
    return -EACCES;
  }
  const bool wants_folder = (flags & O_DIRECTORY) != 0;
  return Ask(wants_folder ? FileQuestionKind::kOpenFolder : FileQuestionKind::kOpen, folder, path, nullptr);
}

long Access(int folder, const char* path, int mode) {
  if ((mode & (W_OK | X_OK)) != 0) return -EACCES;
  return Ask(FileQuestionKind::kStatus, folder, path, nullptr);
}

/// The C library asks for the status of an open file by an empty path.
long GetStatus(int folder, const char* path, struct stat* status, int flags) {
  const bool is_open_file = (flags & AT_EMPTY_PATH) != 0 && (path == nullptr || path[0] == '\0');
  if (is_open_file && folder >= 0) return syscall(SYS_fstat, folder, status) == 0 ? 0 : -errno;
  if (status == nullptr) return -EFAULT;
  return Ask(FileQuestionKind::kStatus, folder, path, status);
}

long Answer(const Call& call) {
  const auto& argument = call.arguments;
  const auto number = [&](std::size_t i) { return static_cast<int>(argument[i]); };
  const auto path = [&](std::size_t i) { return AsPointer<const char*>(argument[i]); };
  const auto status = [&](std::size_t i) { return AsPointer<struct stat*>(argument[i]); };
  switch (call.number) {
    case SYS_openat: return Open(number(0), path(1), number(2));
    case SYS_newfstatat: return GetStatus(number(0), path(1), status(2), number(3));
    case SYS_faccessat:
    case SYS_faccessat2: return Access(number(0), path(1), number(2));
    // Who follows links itself finds none, and opens the path as it is.
    case SYS_readlinkat: return -EINVAL;
#if defined(__x86_64__)
    case SYS_open: return Open(AT_FDCWD, path(0), number(1));
    case SYS_stat:
    case SYS_lstat: return GetStatus(AT_FDCWD, path(0), status(1), 0);
    case SYS_access: return Access(AT_FDCWD, path(0), number(1));
    case SYS_readlink: return -EINVAL;
#endif
    default: return -ENOSYS;
  }
}

void HandleCall(int /*signal*/, siginfo_t* info, void* context) {
  const int saved_error = errno;
  Call call;
  call.number = info->si_syscall;
#if defined(__x86_64__)
  auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  constexpr int kArguments[] = {REG_RDI, REG_RSI, REG_RDX, REG_R10, REG_R8, REG_R9};
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    call.arguments[i] = static_cast<std::uint64_t>(registers[kArguments[i]]);
  }
  registers[REG_RAX] = Answer(call);
#elif defined(__aarch64__)
  auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.regs;
  for (std::size_t i = 0; i < call.arguments.size(); ++i) call.arguments[i] = registers[i];
  registers[0] = static_cast<std::uint64_t>(Answer(call));
#else
  static_cast<void>(context);
#endif
  errno = saved_error;
}

}  // namespace

void HandFile(const char* path, int descriptor) {
  struct stat status {};
  const bool is_usable =
      path != nullptr && std::strlen(path) < sizeof handed.path && descriptor >= 0 && fstat(descriptor, &status) == 0;
  int earlier = -1;
  {
    const BrokerLock lock;
    earlier = handed.descriptor;
    handed.path[0] = '\0';
    handed.descriptor = -1;
    if (is_usable) {
      std::strcpy(handed.path, path);
      handed.descriptor = descriptor;
      handed.status = status;
    }
  }
  if (earlier >= 0) close(earlier);
  if (!is_usable && descriptor >= 0) close(descriptor);
}

bool CatchFileCalls() {
  struct sigaction action {};
  action.sa_sigaction = HandleCall;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigemptyset(&action.sa_mask);
  return sigaction(SIGSYS, &action, nullptr) == 0;
}

}  // namespace ScEng
