// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/Forks.h"

#include <pthread.h>

#include <atomic>
#include <vector>

namespace ScEng {
namespace {

std::atomic<bool> has_workers{false};
std::atomic<bool> has_lost_workers{false};

class HeldMutexes {
 public:
  /// Never destroyed: a process may fork at its very end.
  static HeldMutexes& Get() {
    static HeldMutexes& held = *new HeldMutexes;
    return held;
  }

  void Add(std::mutex& mutex) {
    const std::lock_guard lock(mutex_);
    mutexes_.push_back(&mutex);
  }

 private:
  HeldMutexes() {
    pthread_atfork([] { Get().Take(); }, [] { Get().Release(); },
                   [] {
                     Get().Release();
                     if (has_workers) has_lost_workers = true;
                   });
  }

  void Take() {
    mutex_.lock();
    for (std::mutex* const mutex : mutexes_) mutex->lock();
  }

  void Release() {
    for (auto mutex = mutexes_.rbegin(); mutex != mutexes_.rend(); ++mutex) (*mutex)->unlock();
    mutex_.unlock();
  }

  std::mutex mutex_;
  std::vector<std::mutex*> mutexes_;
};

}  // namespace

void HoldWhileForking(std::mutex& mutex) { HeldMutexes::Get().Add(mutex); }

void NoteWorkers() {
  HeldMutexes::Get();
  has_workers = true;
}

bool HasLostWorkers() { return has_lost_workers; }

}  // namespace ScEng
