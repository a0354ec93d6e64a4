// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/SampleMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "Host/Image/SampleAllocator.h"
#include "Host/Image/SampleMemoryScope.h"
#include "Host/Util/Forks.h"

namespace ScEng {
namespace {

std::atomic<SampleAllocator*> other_allocator{nullptr};

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Below the first bound the system's allocator recycles by itself. Above the second one block would be most of what may
// be kept, so such blocks are kept within a scope only.
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

// The scopes of this thread.
constinit thread_local std::size_t num_own_scopes = 0;

class Recycler {
 public:
  Recycler() {
    HoldWhileForking(mutex_);
    CallInForks([this] { ForgetOtherScopes(); });
  }

  /// A kept block of that size; null where there is none. Then the caller makes one, for which there is room now.
  float* Take(std::size_t bytes) {
    Evicted evicted(*this);
    const std::lock_guard lock(mutex_);
    used_bytes_ += bytes;
    // The latest one first, which may still be in the caches.
    for (std::size_t i = 1; i <= blocks_.size(); ++i) {
      Block& block = blocks_[(next_ + blocks_.size() - i) % blocks_.size()];
      if (block.samples == nullptr || block.bytes != bytes) continue;
      kept_bytes_ -= bytes;
      float* taken = block.samples;
      block = {};
      return taken;
    }
    EvictSurplus(evicted);
    return nullptr;
  }

  /// Says that there is no block although `Take` was asked for one.
  void TakeBack(std::size_t bytes) noexcept {
    const std::lock_guard lock(mutex_);
    used_bytes_ -= bytes;
  }

  /// Keeps the block in place of the oldest one, and lets go of further old ones until the total fits.
  void Keep(float* samples, std::size_t bytes) noexcept {
    Evicted evicted(*this);
    const std::lock_guard lock(mutex_);
    // Between two blocks that are given back, what is in use only grows; what there was no memory for was never in use.
    most_bytes_used_ = std::max(most_bytes_used_, used_bytes_);
    used_bytes_ -= bytes;
    if (scopes_ == 0 && bytes > kLargestKept) {
      evicted.Add({samples, bytes});
      return;
    }
    Evict(blocks_[next_], evicted);
    blocks_[next_] = {samples, bytes};
    kept_bytes_ += bytes;
    next_ = (next_ + 1) % blocks_.size();
    EvictSurplus(evicted);
  }

  /// Gives everything back to the system, and waits until other threads have done so with what they let go of.
  void Clear() noexcept {
    {
      Evicted evicted(*this);
      const std::lock_guard lock(mutex_);
      for (Block& block : blocks_) Evict(block, evicted);
    }
    for (int count = num_freeing_; count > 0; count = num_freeing_) num_freeing_.wait(count);
  }

  void EnterScope() {
    ++num_own_scopes;
    const std::lock_guard lock(mutex_);
    if (scopes_++ == 0) most_bytes_used_ = used_bytes_;
  }

  void LeaveScope() noexcept {
    --num_own_scopes;
    Evicted evicted(*this);
    const std::lock_guard lock(mutex_);
    if (--scopes_ == 0) EvictScoped(evicted);
  }

 private:
  struct Block {
    float* samples = nullptr;
    std::size_t bytes = 0;
  };
  static constexpr std::size_t kMostBlocks = 8;

  /// Blocks that are given back to the system when it goes. That takes milliseconds for a large one, so it is made
  /// before the lock, and goes after it.
  class Evicted {
   public:
    explicit Evicted(Recycler& recycler) : recycler_(recycler) {}
    ~Evicted() {
      if (count_ == 0) return;
      for (std::size_t i = 0; i < count_; ++i) FreeBlock(blocks_[i].samples, blocks_[i].bytes);
      --recycler_.num_freeing_;
      recycler_.num_freeing_.notify_all();
    }
    Evicted(const Evicted&) = delete;
    Evicted& operator=(const Evicted&) = delete;

    /// Under the lock.
    void Add(const Block& block) noexcept {
      if (count_ == 0) ++recycler_.num_freeing_;
      blocks_[count_++] = block;
    }

   private:
    Recycler& recycler_;
    // All that are kept, and one that is to take the place of another.
    std::array<Block, kMostBlocks + 1> blocks_;
    std::size_t count_ = 0;
  };

  void Evict(Block& block, Evicted& evicted) noexcept {
    if (block.samples != nullptr) evicted.Add(block);
    kept_bytes_ -= block.bytes;
    block = {};
  }

  /// In a process that was forked from one with scopes on other threads: those have no end there.
  void ForgetOtherScopes() noexcept {
    // What they were about to give back stays.
    num_freeing_ = 0;
    Evicted evicted(*this);
    const std::lock_guard lock(mutex_);
    if (std::exchange(scopes_, num_own_scopes) > 0 && scopes_ == 0) EvictScoped(evicted);
  }

  /// Lets go of what is kept within scopes only.
  void EvictScoped(Evicted& evicted) noexcept {
    for (Block& block : blocks_) {
      if (block.bytes > kLargestKept) Evict(block, evicted);
    }
    EvictSurplus(evicted);
  }

  /// Lets go of the oldest blocks until what is left may be kept.
  void EvictSurplus(Evicted& evicted) noexcept {
    // Within a scope the samples that are kept take the room of those that were in use before.
    const std::size_t room = scopes_ > 0 && most_bytes_used_ > used_bytes_ ? most_bytes_used_ - used_bytes_ : 0;
    const std::size_t most = std::max(room, kMostBytesKept);
    for (std::size_t i = 0; i < blocks_.size() && kept_bytes_ > most; ++i) {
      Evict(blocks_[(next_ + i) % blocks_.size()], evicted);
    }
  }

  std::mutex mutex_;
  std::array<Block, kMostBlocks> blocks_{};
  std::size_t next_ = 0;
  std::size_t kept_bytes_ = 0;
  // Of blocks that may be kept: what is in use, and what was at most since the first of the scopes began.
  std::size_t used_bytes_ = 0;
  std::size_t most_bytes_used_ = 0;
  std::size_t scopes_ = 0;
  // The threads that give blocks back.
  std::atomic<int> num_freeing_{0};
};

// Never destroyed: images may outlive every static object.
Recycler& GetRecycler() {
  static Recycler& recycler = *new Recycler;
  return recycler;
}

bool IsKeptSize(std::size_t bytes) { return kRecycle && bytes >= kSmallestKept; }

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
    memory = ::operator new(wanted, alignment, std::nothrow);
  }
  if (memory == nullptr) {
    if (IsKeptSize(bytes)) GetRecycler().TakeBack(bytes);
    throw std::bad_alloc();
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

SampleMemoryScope::SampleMemoryScope() { GetRecycler().EnterScope(); }
SampleMemoryScope::~SampleMemoryScope() { GetRecycler().LeaveScope(); }

}  // namespace ScEng
