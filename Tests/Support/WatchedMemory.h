// SPDX-License-Identifier: Apache-2.0
//
// A test program that links the source of this header has allocation functions that can be watched and made to fail.
#pragma once

#include <cstddef>

namespace Testing {

/// Follows the end of one object at a time. A value operation has no virtual destructor, so the only sign of its end is
/// that its memory is given back.
void WatchMemory(const void* object);

/// How often the memory of the object watched last was given back.
int GetTimesFreed();

/// How many bytes have been asked for so far, on all threads.
std::size_t GetAllocatedBytes();

/// For one scope, lets allocations of exactly `bytes` bytes fail on every thread, after `spared` of them have gone
/// well. A test picks a size that nothing else in its scope asks for.
class FailingAllocations {
 public:
  explicit FailingAllocations(std::size_t bytes, int spared = 0);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace Testing
