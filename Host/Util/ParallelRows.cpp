// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelRows.h"

#include <tbb/blocked_range.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include "Host/Util/WorkerLimit.h"

namespace ScEng {
namespace {

/// The arena that the host's operations share. It is kept behind a shared pointer, so that a change of the number of
/// threads does not pull it away from an operation that is running.
struct HostThreads {
  explicit HostThreads(std::size_t threads) : count(threads), arena(static_cast<int>(threads)) { LiftWorkerLimit(); }

  std::size_t count;
  tbb::task_arena arena;
};

std::mutex& GetMutex() {
  static std::mutex mutex;
  return mutex;
}

std::shared_ptr<HostThreads>& GetSlot() {
  static std::shared_ptr<HostThreads> slot;
  return slot;
}

std::size_t GetDefaultNumThreads() { return static_cast<std::size_t>(std::max(1, tbb::info::default_concurrency())); }

std::shared_ptr<HostThreads> GetThreads() {
  const std::lock_guard lock(GetMutex());
  auto& slot = GetSlot();
  if (!slot) slot = std::make_shared<HostThreads>(GetDefaultNumThreads());
  return slot;
}

}  // namespace

std::size_t GetNumThreads() { return GetThreads()->count; }

void SetNumThreads(std::size_t threads) {
  const std::size_t wanted = threads == 0 ? GetDefaultNumThreads() : threads;
  const std::lock_guard lock(GetMutex());
  auto& slot = GetSlot();
  if (slot && slot->count == wanted) return;
  slot = std::make_shared<HostThreads>(wanted);
}

void ParallelRows(std::size_t count, std::size_t grain,
                  const std::function<void(std::size_t from, std::size_t to)>& body) {
  if (count == 0) return;
  const auto threads = GetThreads();
  const std::size_t least = std::max<std::size_t>(grain, 1);
  if (threads->count == 1 || count <= least) {
    body(0, count);
    return;
  }
  threads->arena.execute([&] {
    // A range is halved as long as it is longer than what is given here, so that each half keeps to the grain.
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, 2 * least - 1),
                      [&](const tbb::blocked_range<std::size_t>& range) { body(range.begin(), range.end()); });
  });
}

}  // namespace ScEng
