// SPDX-License-Identifier: Apache-2.0

// With checked calls the headers define some of these functions inline.
#undef _FORTIFY_SOURCE

#include "Tests/Support/FailingCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <utility>

namespace Testing {
namespace {

thread_local FailingCalls* current = nullptr;

/// The system's own function.
template <typename Function>
Function* FindNext(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool IsMet(const char* function) {
  if (current == nullptr || !current->IsMet(function)) return false;
  if (current->GetPlan().fate == CallPlan::Fate::kKills) raise(SIGKILL);
  if (current->GetPlan().fate == CallPlan::Fate::kIsShort) return false;
  errno = current->GetPlan().error;
  return true;
}

/// The same for a function that moves bytes, of which `size` tells how many.
bool IsMet(const char* function, std::size_t& size) {
  if (current == nullptr || current->GetPlan().fate != CallPlan::Fate::kIsShort) return IsMet(function);
  if (current->IsMet(function) && size > 1) size /= 2;
  return false;
}

template <typename Function, typename... Arguments>
auto Pass(const char* name, Arguments... arguments) {
  return FindNext<Function>(name)(arguments...);
}

}  // namespace

FailingCalls::FailingCalls(CallPlan plan) : plan_(std::move(plan)) { current = this; }

FailingCalls::~FailingCalls() { current = nullptr; }

bool FailingCalls::IsMet(const char* function) {
  if (!failed_.empty()) return plan_.lasts && failed_ == function;
  if (!plan_.function.empty() && plan_.function != function) return false;
  if (++count_ != plan_.call) return false;
  failed_ = function;
  return true;
}

}  // namespace Testing

using Testing::IsMet;
using Testing::Pass;

#define STANDS_IN extern "C" __attribute__((visibility("default")))

STANDS_IN int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return IsMet("open") ? -1 : Pass<int(const char*, int, mode_t)>("open", path, flags, mode);
}

STANDS_IN int openat(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return IsMet("openat") ? -1 : Pass<int(int, const char*, int, mode_t)>("openat", folder, path, flags, mode);
}

STANDS_IN int close(int file) {
  const bool is_met = IsMet("close");
  const int error = errno;
  const int result = Pass<int(int)>("close", file);
  if (is_met) errno = error;
  return is_met ? -1 : result;
}

STANDS_IN ssize_t write(int file, const void* bytes, size_t size) {
  return IsMet("write", size) ? -1 : Pass<ssize_t(int, const void*, size_t)>("write", file, bytes, size);
}

STANDS_IN ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
  if (IsMet("pwrite", size)) return -1;
  return Pass<ssize_t(int, const void*, size_t, off_t)>("pwrite", file, bytes, size, offset);
}

STANDS_IN ssize_t pread(int file, void* bytes, size_t size, off_t offset) {
  if (IsMet("pread", size)) return -1;
  return Pass<ssize_t(int, void*, size_t, off_t)>("pread", file, bytes, size, offset);
}

// What checked calls of pread become.
STANDS_IN ssize_t __pread_chk(int file, void* bytes, size_t size, off_t offset, size_t) {
  return pread(file, bytes, size, offset);
}

STANDS_IN int fsync(int) { return IsMet("fsync") ? -1 : 0; }

STANDS_IN int ftruncate(int file, off_t size) noexcept {
  return IsMet("ftruncate") ? -1 : Pass<int(int, off_t)>("ftruncate", file, size);
}

STANDS_IN int fallocate(int file, int mode, off_t offset, off_t size) {
  return IsMet("fallocate") ? -1 : Pass<int(int, int, off_t, off_t)>("fallocate", file, mode, offset, size);
}

STANDS_IN int fstat(int file, struct stat* result) noexcept {
  return IsMet("fstat") ? -1 : Pass<int(int, struct stat*)>("fstat", file, result);
}

STANDS_IN int fstatat(int folder, const char* path, struct stat* result, int flags) noexcept {
  if (IsMet("fstatat")) return -1;
  return Pass<int(int, const char*, struct stat*, int)>("fstatat", folder, path, result, flags);
}

STANDS_IN int faccessat(int folder, const char* path, int mode, int flags) noexcept {
  return IsMet("faccessat") ? -1 : Pass<int(int, const char*, int, int)>("faccessat", folder, path, mode, flags);
}

STANDS_IN int renameat(int from_folder, const char* from, int to_folder, const char* to) noexcept {
  if (IsMet("renameat")) return -1;
  return Pass<int(int, const char*, int, const char*)>("renameat", from_folder, from, to_folder, to);
}

STANDS_IN int fchmod(int file, mode_t mode) noexcept {
  return IsMet("fchmod") ? -1 : Pass<int(int, mode_t)>("fchmod", file, mode);
}

STANDS_IN int fchown(int file, uid_t owner, gid_t group) noexcept {
  return IsMet("fchown") ? -1 : Pass<int(int, uid_t, gid_t)>("fchown", file, owner, group);
}

STANDS_IN int flock(int file, int operation) noexcept {
  return IsMet("flock") ? -1 : Pass<int(int, int)>("flock", file, operation);
}

STANDS_IN int memfd_create(const char* name, unsigned flags) noexcept {
  return IsMet("memfd_create") ? -1 : Pass<int(const char*, unsigned)>("memfd_create", name, flags);
}

STANDS_IN ssize_t getrandom(void* bytes, size_t size, unsigned flags) {
  return IsMet("getrandom") ? -1 : Pass<ssize_t(void*, size_t, unsigned)>("getrandom", bytes, size, flags);
}

STANDS_IN ssize_t llistxattr(const char* path, char* list, size_t size) noexcept {
  return IsMet("llistxattr") ? -1 : Pass<ssize_t(const char*, char*, size_t)>("llistxattr", path, list, size);
}

STANDS_IN ssize_t lgetxattr(const char* path, const char* name, void* value, size_t size) noexcept {
  if (IsMet("lgetxattr")) return -1;
  return Pass<ssize_t(const char*, const char*, void*, size_t)>("lgetxattr", path, name, value, size);
}

STANDS_IN int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
  if (IsMet("fsetxattr")) return -1;
  return Pass<int(int, const char*, const void*, size_t, int)>("fsetxattr", file, name, value, size, flags);
}

STANDS_IN int fremovexattr(int file, const char* name) noexcept {
  return IsMet("fremovexattr") ? -1 : Pass<int(int, const char*)>("fremovexattr", file, name);
}
