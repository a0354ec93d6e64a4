// SPDX-License-Identifier: Apache-2.0
#include "Tests/Support/WatchedMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<const void*> watched{nullptr};
std::atomic<int> times_freed{0};
std::atomic<std::size_t> failing_bytes{0};
std::atomic<int> spared_allocations{0};
std::atomic<std::size_t> allocated_bytes{0};

bool Fails(std::size_t bytes) noexcept {
  allocated_bytes += bytes;
  return bytes != 0 && bytes == failing_bytes && spared_allocations-- <= 0;
}

void* Allocate(std::size_t bytes) noexcept { return Fails(bytes) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes); }

void* Allocate(std::size_t bytes, std::align_val_t alignment) noexcept {
  const auto unit = static_cast<std::size_t>(alignment);
  // The size must be a multiple of the alignment.
  return Fails(bytes) ? nullptr : std::aligned_alloc(unit, (bytes + unit - 1) / unit * unit);
}

void* OrThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
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

std::size_t Testing::GetAllocatedBytes() { return allocated_bytes; }

int Testing::GetTimesFreed() { return times_freed; }

Testing::FailingAllocations::FailingAllocations(std::size_t bytes, int spared) {
  spared_allocations = spared;
  failing_bytes = bytes;
}

Testing::FailingAllocations::~FailingAllocations() { failing_bytes = 0; }

void* operator new(std::size_t bytes) { return OrThrow(Allocate(bytes)); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new(std::size_t bytes, std::align_val_t alignment) { return OrThrow(Allocate(bytes, alignment)); }
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Allocate(bytes, alignment);
}
void* operator new[](std::size_t bytes) { return OrThrow(Allocate(bytes)); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new[](std::size_t bytes, std::align_val_t alignment) { return OrThrow(Allocate(bytes, alignment)); }
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Allocate(bytes, alignment);
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept { Free(memory); }
