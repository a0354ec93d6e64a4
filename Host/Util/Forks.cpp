// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/Forks.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace ScEng {
namespace {

std::atomic<bool> has_workers{false};
std::atomic<bool> has_lost_workers{false};

/// What forks have to do with.
class ForkHandlers {
 public:
  /// Never destroyed: a process may fork at its very end.
  static ForkHandlers& Get() {
    static ForkHandlers& handlers = *new ForkHandlers;
    return handlers;
  }

  void Add(std::mutex& mutex) {
    const std::lock_guard lock(mutex_);
    mutexes_.push_back(&mutex);
  }
  void Add(std::function<void()> function) {
    const std::lock_guard lock(mutex_);
    functions_.push_back(std::move(function));
  }

 private:
  ForkHandlers() {
    pthread_atfork([] { Get().Take(); }, [] { Get().Release(); },
                   [] {
                     Get().Release();
                     if (has_workers) has_lost_workers = true;
                     for (const auto& function : Get().functions_) function();
                   });
  }

  void Take() {
    mutex_.lock();
    for (std::mutex* const mutex : mutexes_) mutex->lock();
  }

  void Release() {
    std::for_each(mutexes_.rbegin(), mutexes_.rend(), [](std::mutex* mutex) { mutex->unlock(); });
    mutex_.unlock();
  }

  std::mutex mutex_;
  std::vector<std::mutex*> mutexes_;
  std::vector<std::function<void()>> functions_;
};

}  // namespace

void HoldWhileForking(std::mutex& mutex) { ForkHandlers::Get().Add(mutex); }

void CallInForks(std::function<void()> function) { ForkHandlers::Get().Add(std::move(function)); }

void NoteWorkers() {
  ForkHandlers::Get();
  has_workers = true;
}

bool HasLostWorkers() { return has_lost_workers; }

}  // namespace ScEng
