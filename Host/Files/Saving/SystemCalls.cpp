// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace ScEng {

std::string DescribeErrno(ErrorNumber error) { return std::generic_category().message(error); }

ErrorNumber WriteBytes(int to, off_t offset, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t put = Retry([&] { return pwrite(to, bytes, size, offset); });
    if (put < 0) return errno;
    if (put == 0) return EIO;
    bytes += put;
    size -= static_cast<std::size_t>(put);
    offset += put;
  }
  return 0;
}

ErrorNumber CopyContent(int from, int to) {
  struct stat source {};
  if (fstat(from, &source) != 0) return errno;
  std::array<char, std::size_t{1} << 16> piece;
  for (off_t offset = 0; offset < source.st_size;) {
    const auto wanted = std::min(piece.size(), static_cast<std::size_t>(source.st_size - offset));
    const ssize_t got = Retry([&] { return pread(from, piece.data(), wanted, offset); });
    if (got < 0) return errno;
    if (got == 0) return EIO;
    if (const ErrorNumber failure = WriteBytes(to, offset, piece.data(), static_cast<std::size_t>(got))) return failure;
    offset += got;
  }
  if (Retry([&] { return ftruncate(to, source.st_size); }) != 0) return errno;
  return Flush(to);
}

ErrorNumber Flush(int descriptor) {
  if (Retry([&] { return fsync(descriptor); }) == 0) return 0;
  // The answer of file systems that have nothing to flush.
  return errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

void FlushFolder(int folder) {
  const Descriptor readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (readable.IsOpen()) static_cast<void>(Flush(readable.Get()));
}

}  // namespace ScEng
