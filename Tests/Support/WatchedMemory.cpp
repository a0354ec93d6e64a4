// SPDX-License-Identifier: Apache-2.0
#include "Tests/Support/WatchedMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::atomic<const void*> watched{nullptr};
std::atomic<int> times_freed{0};

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> limit{kNoLimit};

void* Allocate(std::size_t bytes) noexcept {
  if (bytes >= limit) return nullptr;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void Free(void* memory) noexcept {
  const void* expected = memory;
  // The next object may get the same place, so the watch ends here.
  if (memory != nullptr && watched.compare_exchange_strong(expected, nullptr)) ++times_freed;
  std::free(memory);
}

}  // namespace

void Testing::WatchMemory(const void* object) {
  watched = object;
  times_freed = 0;
}

int Testing::GetTimesFreed() { return times_freed; }

Testing::MemoryLimit::MemoryLimit(std::size_t bytes) { limit = bytes; }
Testing::MemoryLimit::~MemoryLimit() { limit = kNoLimit; }

void* operator new(std::size_t bytes) {
  if (void* memory = Allocate(bytes)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new[](std::size_t bytes) {
  if (void* memory = Allocate(bytes)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }
