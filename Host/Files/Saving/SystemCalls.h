// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <string>

namespace ScEng {

/// What the functions of this folder return: 0, or the errno of the call that failed.
using ErrorNumber = int;

std::string DescribeErrno(ErrorNumber error);

/// Repeats a call that a signal interrupts.
template <typename Call>
auto Retry(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

/// An open file or folder, closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { static_cast<void>(Close()); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] bool IsOpen() const { return number_ >= 0; }
  [[nodiscard]] int Get() const { return number_; }
  /// Closes what was open before.
  void Reset(int number);
  /// Some file systems tell here that they could not keep what was written.
  ErrorNumber Close();

 private:
  int number_;
};

ErrorNumber WriteBytes(int to, off_t offset, const char* bytes, std::size_t size);

/// Makes the content of `to` that of `from`, from the first byte to the last, and flushes it to disk.
ErrorNumber CopyContent(int from, int to);

ErrorNumber Flush(int descriptor);

/// Brings new and changed names in a folder to disk. A file system that cannot do so is not a reason to fail.
void FlushFolder(int folder);

}  // namespace ScEng
