// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace Testing {

/// Follows the end of one object at a time. A value operation has no virtual destructor, so the only sign of its end is
/// that its memory is given back; a test program that links the source of this header has allocation functions that
/// notice it.
void WatchMemory(const void* object);

/// How often the memory of the object watched last was given back.
int GetTimesFreed();

/// Makes every allocation fail that is as large as this, or larger, until it is gone. Images are not concerned, which
/// have their memory elsewhere.
class MemoryLimit {
 public:
  explicit MemoryLimit(std::size_t bytes);
  ~MemoryLimit();
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;
};

}  // namespace Testing
