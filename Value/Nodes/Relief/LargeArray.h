// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <hwy/aligned_allocator.h>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <cstddef>
#include <cstdint>
#include <new>

/// Memory for `count` unset numbers, aligned for vectors. Throws `std::bad_alloc`.
///
/// Where the system offers it, it lies in large pages: a search that jumps about in an image-sized table otherwise
/// waits for the processor to find the pages.
inline hwy::AlignedFreeUniquePtr<float[]> MakeLargeArray(std::size_t count) {
  auto memory = hwy::AllocateAligned<float>(count);
  if (!memory) throw std::bad_alloc();
#if defined(__linux__)
  constexpr std::size_t kPage = 4096;
  constexpr std::size_t kWorthwhile = std::size_t{1} << 20;
  const std::size_t bytes = count * sizeof(float);
  if (bytes >= kWorthwhile) {
    const std::size_t before = (kPage - reinterpret_cast<std::uintptr_t>(memory.get()) % kPage) % kPage;
    auto* const first = reinterpret_cast<unsigned char*>(memory.get()) + before;
    // A refusal costs speed only.
    static_cast<void>(madvise(first, (bytes - before) / kPage * kPage, MADV_HUGEPAGE));
  }
#endif
  return memory;
}
