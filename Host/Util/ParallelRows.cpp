// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelRows.h"

#include <tbb/blocked_range.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>

#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Forks.h"
#include "Host/Util/TaskHandover.h"
#include "Host/Util/WorkContext.h"
#include "Host/Util/WorkerLimit.h"

namespace ScEng {
namespace {

/// The arena that the host's operations share. It is kept behind a shared pointer, so that a change of the number of
/// threads does not pull it away from an operation that is running.
class HostThreads {
 public:
  explicit HostThreads(std::size_t count) : count_(count) {}

  [[nodiscard]] std::size_t GetCount() const { return count_; }
  tbb::task_arena& GetArena() {
    std::call_once(once_, [this] { arena_.emplace(static_cast<int>(PrepareWorkers(count_))); });
    return *arena_;
  }

 private:
  std::size_t count_;
  std::once_flag once_;
  std::optional<tbb::task_arena> arena_;
};

std::mutex& GetMutex() {
  static std::mutex& mutex = []() -> std::mutex& {
    auto& made = *new std::mutex;
    HoldWhileForking(made);
    return made;
  }();
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

std::size_t GetNumThreads() { return HasLostWorkers() ? 1 : GetThreads()->GetCount(); }

void SetNumThreads(std::size_t threads) {
  const std::size_t wanted = threads == 0 ? GetDefaultNumThreads() : threads;
  const std::lock_guard lock(GetMutex());
  auto& slot = GetSlot();
  if (slot && slot->GetCount() == wanted) return;
  slot = std::make_shared<HostThreads>(wanted);
}

void ParallelRows(std::size_t count, std::size_t grain,
                  const std::function<void(std::size_t from, std::size_t to)>& body) {
  if (count == 0) return;
  const auto threads = GetThreads();
  const std::size_t least = std::max<std::size_t>(grain, 1);
  WorkContext* const context = GetWorkContext();
  ProgressPass pass(count);
  const auto work = [&](std::size_t from, std::size_t to) {
    if (context == nullptr) {
      body(from, to);
    } else {
      WorkInPieces(*context, pass, from, to, least, body);
    }
  };
  if (threads->GetCount() == 1 || count <= least || HasLostWorkers()) {
    work(0, count);
    return;
  }
  TaskHandover handover;
  handover.Give();
  threads->GetArena().execute([&] {
    // A range is halved as long as it is longer than what is given here, so that each half keeps to the grain.
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, 2 * least - 1),
                      [&](const tbb::blocked_range<std::size_t>& range) {
                        const TaskHandover::Task task(handover);
                        const WorkContextGuard guard(context);
                        work(range.begin(), range.end());
                      });
  });
}

}  // namespace ScEng
