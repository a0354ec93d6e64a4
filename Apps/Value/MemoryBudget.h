// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

/// Bounds what several jobs hold in memory together. Each takes its share before it begins and waits until there is
/// room for it; one that wants more than there ever is goes alone. From any thread.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::uint64_t bytes) : bytes_(bytes) {}

  /// A share, held as long as this lives.
  class Share {
   public:
    Share(MemoryBudget& budget, std::uint64_t bytes);
    ~Share();
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

   private:
    MemoryBudget& budget_;
    std::uint64_t bytes_;
  };

  /// The half of what the machine, or the limits of this process, have to give.
  static std::uint64_t FindDefault();

 private:
  const std::uint64_t bytes_;
  std::mutex mutex_;
  std::condition_variable released_;
  std::uint64_t taken_ = 0;
  unsigned holders_ = 0;
};
