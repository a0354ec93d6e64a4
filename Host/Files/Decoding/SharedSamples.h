// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <utility>

#include "Host/Files/Api.h"

namespace ScEng {

/// Memory for samples that a process which decodes can fill, so that they need not be copied. It begins with zeros, and
/// its size can never change.
class HOST_FILES_API SharedSamples {
 public:
  /// At least `bytes` bytes at the start of a page; throws `std::bad_alloc`.
  explicit SharedSamples(std::size_t bytes);
  ~SharedSamples();
  SharedSamples(SharedSamples&& other) noexcept;
  SharedSamples& operator=(SharedSamples&& other) noexcept;
  SharedSamples(const SharedSamples&) = delete;
  SharedSamples& operator=(const SharedSamples&) = delete;

  [[nodiscard]] float* GetSamples() const { return samples_; }
  [[nodiscard]] std::size_t GetBytes() const { return bytes_; }
  /// What another process maps the memory by.
  [[nodiscard]] int GetDescriptor() const { return descriptor_; }

  /// Hands the memory over: from now on it is the caller's, who gives it back by `Unmap` with the number of bytes of
  /// `GetBytes` before this call.
  [[nodiscard]] float* Release();
  static void Unmap(float* samples, std::size_t bytes) noexcept;

 private:
  void Close() noexcept;

  float* samples_ = nullptr;
  std::size_t bytes_ = 0;
  int descriptor_ = -1;
};

}  // namespace ScEng
