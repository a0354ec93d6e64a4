// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Image/SampleMemory.h"

namespace ScEng {

/// Memory for the time of one operation: `count` numbers of 32 bits, unset, the first one 64-byte aligned. Throws
/// `std::bad_alloc`. Large blocks are recycled like those of images.
template <class T>
class Scratch {
  static_assert(sizeof(T) == sizeof(float));

 public:
  explicit Scratch(std::size_t count)
      : bytes_(count * sizeof(T)), data_(static_cast<T*>(static_cast<void*>(AllocateSamples(bytes_)))) {}
  ~Scratch() { ReleaseSamples(static_cast<float*>(static_cast<void*>(data_)), bytes_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  [[nodiscard]] T* Get() const { return data_; }

 private:
  std::size_t bytes_;
  T* data_;
};

}  // namespace ScEng
