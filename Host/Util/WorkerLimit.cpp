// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/WorkerLimit.h"

#include <tbb/global_control.h>

#include <algorithm>
#include <latch>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "Host/Util/Forks.h"
#include "Host/Util/Log.h"

namespace ScEng {
namespace {

/// How many of `wanted` threads can run at once beside those that run already.
std::size_t CountStartableThreads(std::size_t wanted) {
  std::latch all_have_started(1);
  std::vector<std::thread> threads;
  threads.reserve(wanted);
  try {
    while (threads.size() < wanted) threads.emplace_back([&] { all_have_started.wait(); });
  } catch (const std::system_error&) {
    // No more than these.
  }
  all_have_started.count_down();
  for (std::thread& thread : threads) thread.join();
  return threads.size();
}

class Workers {
 public:
  std::size_t Prepare(std::size_t threads) {
    const std::lock_guard lock(mutex_);
    if (prepared_for_ == threads) return allowed_;
    const std::size_t workers = std::max<std::size_t>(threads, 1) - 1;
    if (workers > startable_) {
      startable_ += CountStartableThreads(workers - startable_);
      if (workers > startable_) {
        Log::Warning("only %zu of %zu threads can be started; the work is done on these", startable_ + 1, threads);
      }
    }
    allowed_ = std::min(workers, startable_) + 1;
    // The smallest limit holds, so that the new one comes before the old one goes.
    limit_ = std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism, allowed_);
    prepared_for_ = threads;
    return allowed_;
  }

 private:
  std::mutex mutex_;
  std::size_t prepared_for_ = 0;
  std::size_t allowed_ = 1;
  // The most workers that have been seen to start.
  std::size_t startable_ = 0;
  std::unique_ptr<tbb::global_control> limit_;
};

}  // namespace

std::size_t PrepareWorkers(std::size_t threads) {
  // Never destroyed: operations may run until the end of the process.
  static Workers& workers = *new Workers;
  NoteWorkers();
  return workers.Prepare(threads);
}

}  // namespace ScEng
