// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/InPlace.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include "Host/Files/Saving/TemporaryFile.h"

namespace ScEng {
namespace {

/// Waits a while for other writers. Where there are no locks, nothing is to be waited for.
bool Lock(int file) {
  constexpr int kMostTries = 1000;
  constexpr int kMilliseconds = 10;
  for (int i = 0; i < kMostTries; ++i) {
    if (flock(file, LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK && errno != EINTR) return true;
    poll(nullptr, 0, kMilliseconds);
  }
  return false;
}

ErrorNumber BackUp(int file, TemporaryFile& backup, int folder) {
  ErrorNumber failure = backup.Create(S_IRUSR | S_IWUSR);
  if (failure == 0) failure = CopyContent(file, backup.GetDescriptor());
  if (failure == 0) FlushFolder(folder);
  return failure;
}

/// A full disk is best met before anything has changed.
ErrorNumber ReserveSpace(int file, int source) {
  struct stat now {};
  struct stat wanted {};
  if (fstat(file, &now) != 0 || fstat(source, &wanted) != 0) return errno;
  if (wanted.st_size <= now.st_size) return 0;
  if (Retry([&] { return fallocate(file, FALLOC_FL_KEEP_SIZE, 0, wanted.st_size); }) == 0) return 0;
  const ErrorNumber failure = errno;
  if (failure == ENOTSUP || failure == ENOSYS || failure == EINVAL) return 0;
  // Gives back what was reserved until then.
  [[maybe_unused]] const int given_back = ftruncate(file, now.st_size);
  return failure;
}

}  // namespace

std::string RewriteInPlace(const TargetFile& target, int source) {
  const Descriptor file(
      Retry([&] { return openat(target.GetFolder(), target.GetName().c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC); }));
  if (!file.IsOpen()) return DescribeErrno(errno);
  if (!Lock(file.Get())) return "another program has locked it";
  TemporaryFile backup(target.GetFolder());
  if (const ErrorNumber failure = BackUp(file.Get(), backup, target.GetFolder())) return DescribeErrno(failure);
  if (const ErrorNumber failure = ReserveSpace(file.Get(), source)) return DescribeErrno(failure);

  const SignalDelay delay;
  const ErrorNumber failure = CopyContent(source, file.Get());
  if (failure == 0) return {};
  if (CopyContent(backup.GetDescriptor(), file.Get()) == 0) return DescribeErrno(failure);
  backup.Keep();
  const std::filesystem::path kept = target.GetFolderPath() / backup.GetName();
  return DescribeErrno(failure) + "; its old content is in \"" + kept.string() + "\"";
}

}  // namespace ScEng
