// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ScEng {

/// 0, or the errno of the call that failed.
using ErrorNumber = int;

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
  void Reset(int number) {
    static_cast<void>(Close());
    number_ = number;
  }
  /// Some file systems tell here that they could not keep what was written.
  ErrorNumber Close() {
    if (number_ < 0) return 0;
    // Linux has freed the number even where the call was interrupted, and another thread may own it by now.
    return close(std::exchange(number_, -1)) == 0 || errno == EINTR ? 0 : errno;
  }

 private:
  int number_;
};

}  // namespace ScEng
