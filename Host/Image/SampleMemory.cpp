// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/SampleMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "Host/Image/SampleAllocator.h"
#include "Host/Util/Forks.h"

namespace ScEng {
namespace {

std::atomic<SampleAllocator*> other_allocator{nullptr};

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Below the first bound the system's allocator recycles by itself; above the second one block would be most of what
// may be kept.
constexpr std::size_t kSmallestKept = std::size_t{1} << 20;
constexpr std::size_t kLargestKept = std::size_t{256} << 20;
constexpr std::size_t kMostBytesKept = std::size_t{512} << 20;

// A sanitizer can only see a use after release of memory that really is released.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kRecycle = false;
#else
constexpr bool kRecycle = true;
#endif

std::align_val_t AlignmentOf(std::size_t bytes) {
  return bytes >= kSmallestKept ? std::align_val_t{kHugePage} : kAlignment;
}

void FreeBlock(float* block, std::size_t bytes) noexcept { ::operator delete(block, AlignmentOf(bytes)); }

class Recycler {
 public:
  Recycler() { HoldWhileForking(mutex_); }

  float* Take(std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    for (Block& block : blocks_) {
      if (block.samples == nullptr || block.bytes != bytes) continue;
      kept_bytes_ -= bytes;
      float* taken = block.samples;
      block = {};
      return taken;
    }
    return nullptr;
  }

  /// Keeps the block in place of the oldest one, and lets go of further old ones until the total fits.
  void Keep(float* samples, std::size_t bytes) noexcept {
    const std::lock_guard lock(mutex_);
    Evict(blocks_[next_]);
    blocks_[next_] = {samples, bytes};
    kept_bytes_ += bytes;
    next_ = (next_ + 1) % blocks_.size();
    for (std::size_t i = 0; i + 1 < blocks_.size() && kept_bytes_ > kMostBytesKept; ++i) {
      Evict(blocks_[(next_ + i) % blocks_.size()]);
    }
  }

  /// Gives everything back to the system.
  void Clear() noexcept {
    const std::lock_guard lock(mutex_);
    for (Block& block : blocks_) Evict(block);
  }

 private:
  struct Block {
    float* samples = nullptr;
    std::size_t bytes = 0;
  };

  void Evict(Block& block) noexcept {
    if (block.samples != nullptr) FreeBlock(block.samples, block.bytes);
    kept_bytes_ -= block.bytes;
    block = {};
  }

  std::mutex mutex_;
  std::array<Block, 8> blocks_{};
  std::size_t next_ = 0;
  std::size_t kept_bytes_ = 0;
};

// Never destroyed: images may outlive every static object.
Recycler& GetRecycler() {
  static Recycler& recycler = *new Recycler;
  return recycler;
}

bool IsKeptSize(std::size_t bytes) { return kRecycle && bytes >= kSmallestKept && bytes <= kLargestKept; }

}  // namespace

void SetSampleAllocator(SampleAllocator* allocator) { other_allocator = allocator; }

float* AllocateSamples(std::size_t bytes) {
  if (SampleAllocator* other = other_allocator) return other->Allocate(bytes);
  if (IsKeptSize(bytes)) {
    if (float* recycled = GetRecycler().Take(bytes)) return recycled;
  }
  const std::size_t wanted = std::max<std::size_t>(bytes, 1);
  const std::align_val_t alignment = AlignmentOf(bytes);
  void* memory = ::operator new(wanted, alignment, std::nothrow);
  if (memory == nullptr) {
    GetRecycler().Clear();
    memory = ::operator new(wanted, alignment);
  }
#if defined(__linux__)
  // A refusal costs speed only.
  if (bytes >= kSmallestKept) static_cast<void>(madvise(memory, wanted, MADV_HUGEPAGE));
#endif
  return static_cast<float*>(memory);
}

void ReleaseSamples(float* samples, std::size_t bytes) noexcept {
  if (samples == nullptr) return;
  if (SampleAllocator* other = other_allocator) {
    other->Release(samples, bytes);
    return;
  }
  if (IsKeptSize(bytes)) {
    GetRecycler().Keep(samples, bytes);
  } else {
    FreeBlock(samples, bytes);
  }
}

}  // namespace ScEng
