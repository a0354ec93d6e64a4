// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/AtomicFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

#include "Host/Files/FileErrors.h"
#include "Host/Files/FileSizeLimit.h"

namespace ScEng {
namespace {

std::string DescribeErrno(int error) { return std::generic_category().message(error); }

/// Copies everything from the start of one descriptor to another; the errno of what failed, or 0.
int CopyAll(int from, int to) {
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  std::vector<char> piece(kPiece);
  off_t offset = 0;
  for (;;) {
    const ssize_t got = pread(from, piece.data(), piece.size(), offset);
    if (got == 0) return 0;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    offset += got;
    for (ssize_t written = 0; written < got;) {
      const ssize_t put = write(to, piece.data() + written, static_cast<std::size_t>(got - written));
      if (put < 0 && errno == EINTR) continue;
      if (put < 0) return errno;
      written += put;
    }
  }
}

/// The rename itself must reach the disk too. A file system that cannot flush a folder is not a reason to fail.
void FlushFolder(const std::filesystem::path& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

/// Whether a write of this thread was refused for the size of its file since the thread made its last memory file. The
/// system sends the signal to the thread that writes.
thread_local volatile std::sig_atomic_t is_over_limit = 0;

extern "C" void OnFileSizeSignal(int) { is_over_limit = 1; }

}  // namespace

void CatchFileSizeSignal() {
  struct sigaction action {};
  action.sa_handler = OnFileSizeSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGXFSZ, &action, nullptr);
}

MemoryFile::MemoryFile() : descriptor_(memfd_create("value-image", MFD_CLOEXEC)) { is_over_limit = 0; }

MemoryFile::~MemoryFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string MemoryFile::GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

Status ReplaceFile(const std::filesystem::path& target, int source_descriptor) {
  if (is_over_limit != 0) return MakeWriteError(target, DescribeErrno(EFBIG));
  std::error_code error;
  // A link is followed, so that the file it names is replaced and not the link.
  std::filesystem::path place = target;
  constexpr int kMostLinks = 40;
  for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(place, error); ++links) {
    // A relative link starts from its own folder, an absolute one replaces the whole path.
    place = place.parent_path() / std::filesystem::read_symlink(place, error);
  }
  const auto kind = std::filesystem::status(place, error).type();
  if (kind == std::filesystem::file_type::directory) return MakeWriteError(target, "it is a folder");
  if (kind != std::filesystem::file_type::regular && kind != std::filesystem::file_type::not_found) {
    return MakeWriteError(target, error ? error.message() : "it is not a regular file");
  }
  const std::filesystem::path folder = place.has_parent_path() ? place.parent_path() : ".";
  if (!std::filesystem::is_directory(folder, error)) {
    return MakeWriteError(target, "the folder \"" + folder.string() + "\" does not exist");
  }

  static std::atomic<unsigned> counter{0};
  const std::string name = "." + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".part";
  const std::filesystem::path temporary = folder / name;
  const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0) return MakeWriteError(target, DescribeErrno(errno));
  int failure = CopyAll(source_descriptor, descriptor);
  // Who could read the file before can read it after, and nobody else.
  struct stat replaced {};
  if (failure == 0 && stat(place.c_str(), &replaced) == 0) {
    static_cast<void>(fchmod(descriptor, replaced.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)));
  }
  if (failure == 0 && fsync(descriptor) != 0) failure = errno;
  if (close(descriptor) != 0 && failure == 0) failure = errno;
  if (failure == 0 && rename(temporary.c_str(), place.c_str()) != 0) failure = errno;
  if (failure != 0) {
    unlink(temporary.c_str());
    return MakeWriteError(target, DescribeErrno(failure));
  }
  FlushFolder(folder);
  return {};
}

}  // namespace ScEng
