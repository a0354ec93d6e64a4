// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/AtomicFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

#include "Host/Files/FileErrors.h"
#include "Host/Files/Saving/FileAttributes.h"
#include "Host/Files/Saving/FileSizeSignal.h"
#include "Host/Files/Saving/InPlace.h"
#include "Host/Files/Saving/SystemCalls.h"
#include "Host/Files/Saving/TargetFile.h"
#include "Host/Files/Saving/TemporaryFile.h"

namespace ScEng {
namespace {

/// Why the temporary file could not be made, in words that say where.
std::string DescribeCreation(const TargetFile& target, ErrorNumber failure) {
  const bool is_of_folder = failure == EACCES || failure == EPERM || failure == EROFS || failure == ENOENT;
  if (!is_of_folder) return DescribeErrno(failure);
  return "no file can be made in the folder \"" + target.GetFolderPath().string() + "\": " + DescribeErrno(failure);
}

/// Whether a file is rewritten where it is: one with other names keeps them.
bool HasOtherNames(const TargetFile& target) { return target.GetOld().has_value() && target.GetOld()->st_nlink > 1; }

/// Returns why the target is as it was, or nothing.
std::string RenameOver(const TargetFile& target, int source) {
  TemporaryFile temporary(target.GetFolder());
  const bool is_new = !target.GetOld().has_value();
  // Until it has the permissions of the old file, the new content is nobody else's to see.
  if (const ErrorNumber failure = temporary.Create(is_new ? 0666 : 0600)) return DescribeCreation(target, failure);
  ErrorNumber failure = 0;
  if (!is_new) failure = CopyAttributes(target.GetPath(), *target.GetOld(), temporary.GetDescriptor());
  if (failure == 0) failure = CopyContent(source, temporary.GetDescriptor());
  if (failure == 0) failure = temporary.Close();
  if (failure == 0) failure = temporary.RenameTo(target.GetName());
  // A file that is mounted there by itself cannot give way to another.
  if (failure == EBUSY && !is_new) return RewriteInPlace(target, source);
  return failure == 0 ? std::string{} : DescribeErrno(failure);
}

}  // namespace

MemoryFile::MemoryFile() : descriptor_(memfd_create("value-image", MFD_CLOEXEC)), failure_(IsOpen() ? 0 : errno) {
  ForgetFileSizeSignal();
}

MemoryFile::~MemoryFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string MemoryFile::GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

std::string MemoryFile::Write(std::string_view bytes) const {
  if (!IsOpen()) return DescribeErrno(failure_);
  if (Retry([&] { return ftruncate(descriptor_, 0); }) != 0) return DescribeErrno(errno);
  const ErrorNumber failure = WriteBytes(descriptor_, 0, bytes.data(), bytes.size());
  return failure == 0 ? std::string{} : DescribeErrno(failure);
}

std::string TryToReplaceFile(const std::filesystem::path& target) {
  TargetFile place;
  if (std::string problem = place.Find(target); !problem.empty() || HasOtherNames(place)) return problem;
  TemporaryFile temporary(place.GetFolder());
  const ErrorNumber failure = temporary.Create(0600);
  return failure == 0 ? std::string{} : DescribeCreation(place, failure);
}

Status ReplaceFile(const std::filesystem::path& target, int source_descriptor) {
  if (HasFileSizeSignal()) return MakeWriteError(target, DescribeErrno(EFBIG));
  TargetFile place;
  if (const std::string problem = place.Find(target); !problem.empty()) return MakeWriteError(target, problem);
  const std::string problem =
      HasOtherNames(place) ? RewriteInPlace(place, source_descriptor) : RenameOver(place, source_descriptor);
  if (!problem.empty()) return MakeWriteError(target, problem);
  FlushFolder(place.GetFolder());
  return {};
}

}  // namespace ScEng
