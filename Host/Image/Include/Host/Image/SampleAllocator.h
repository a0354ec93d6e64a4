// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Image/Api.h"

namespace ScEng {

/// Where the samples of images lie, for programs that want to watch them: a validator that looks for writes beside an
/// image, a test that counts images. Both operations may be called from any thread.
class SampleAllocator {
 public:
  /// At least `bytes` bytes (which may be 0), 64-byte aligned, never null; throws `std::bad_alloc`.
  virtual float* Allocate(std::size_t bytes) = 0;
  /// Takes back what `Allocate` gave for that number of bytes.
  virtual void Release(float* samples, std::size_t bytes) noexcept = 0;

 protected:
  SampleAllocator() = default;
  ~SampleAllocator() = default;
};

/// Has the samples of every image come from `allocator`, which then stays to the end of the process. To be called
/// before the first image is made; without a call the host's own memory for samples is used.
HOST_IMAGE_API void SetSampleAllocator(SampleAllocator* allocator);

}  // namespace ScEng
