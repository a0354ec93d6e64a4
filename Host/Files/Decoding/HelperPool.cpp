// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/HelperPool.h"

#include <utility>

namespace ScEng {

HelperPool& HelperPool::Get() {
  static HelperPool& pool = *new HelperPool;
  return pool;
}

std::unique_ptr<HelperProcess> HelperPool::Take(const CodecRow& codec, std::string& problem) {
  for (;;) {
    std::unique_ptr<HelperProcess> process;
    {
      const std::lock_guard lock(mutex_);
      auto& idle = idle_[codec.name];
      if (idle.empty()) break;
      // The last one that was used has most of its memory at hand.
      process = std::move(idle.back());
      idle.pop_back();
    }
    if (process->IsUsable()) return process;
  }
  return HelperProcess::Start(codec, problem);
}

void HelperPool::Keep(const CodecRow& codec, std::unique_ptr<HelperProcess> process) {
  const std::lock_guard lock(mutex_);
  idle_[codec.name].push_back(std::move(process));
}

void HelperPool::Clear() {
  const std::lock_guard lock(mutex_);
  idle_.clear();
}

}  // namespace ScEng
