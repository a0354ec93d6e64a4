// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>

#include "Host/Util/Api.h"
#include "Host/Util/Cancellation.h"

namespace ScEng {

struct WorkContext;

/// Says what the work of this thread belongs to while the scope lasts: which request stops it, and who is told how far
/// it is. The threads that `ParallelRows`, `ParallelFor` and `ThreadPool` bring in work for the same scope as their
/// caller. Scopes nest: the inner one is told, and the requests of both stop it.
class HOST_UTIL_API EvaluationScope {
 public:
  /// Called with the share of the work that is done, from 0 to 1, never less than before, a hundred times a second at
  /// most, on the thread of the scope. Must not throw.
  using Progress = std::function<void(double fraction)>;

  /// `cancellation` may be null: then only the requests of outer scopes count.
  explicit EvaluationScope(const Cancellation* cancellation, Progress progress = {});
  ~EvaluationScope();
  EvaluationScope(const EvaluationScope&) = delete;
  EvaluationScope& operator=(const EvaluationScope&) = delete;

  /// Whether work of this scope was stopped, whatever has become of the exception on its way.
  [[nodiscard]] bool WasStopped() const;

 private:
  std::unique_ptr<WorkContext> context_;
  WorkContext* outer_;
};

/// One pass of known length over the work of an evaluation, for its progress.
///
/// How many passes a node makes is not known, so each takes half of what is left of the whole; `ProgressPart` says it
/// better. Only passes that the thread of the scope makes one after the other count; those within a pass do not.
class HOST_UTIL_API ProgressPass {
 public:
  /// `total` steps, of whatever size.
  explicit ProgressPass(std::size_t total);
  ~ProgressPass();
  ProgressPass(const ProgressPass&) = delete;
  ProgressPass& operator=(const ProgressPass&) = delete;

  /// Tells of `steps` more that are done. May be called from every thread that works on the pass.
  void Add(std::size_t steps);
  /// The same, then `PollCancellation`: all that a loop over rows on one thread needs.
  void Step(std::size_t steps = 1) {
    Add(steps);
    PollCancellation();
  }

 private:
  // Null where nobody is told.
  WorkContext* context_;
  std::size_t total_;
  std::atomic<std::size_t> done_{0};
  double begin_ = 0.0;
  double share_ = 0.0;
};

/// A part of an evaluation that takes a known share of the work that is left: `share` of it, from 0 to 1. The first
/// `passes` passes in it are equally long.
class HOST_UTIL_API ProgressPart {
 public:
  explicit ProgressPart(double share, std::size_t passes = 1);
  ~ProgressPart();
  ProgressPart(const ProgressPart&) = delete;
  ProgressPart& operator=(const ProgressPart&) = delete;

 private:
  WorkContext* context_;
  double outer_end_ = 1.0;
  std::size_t outer_passes_ = 0;
};

}  // namespace ScEng
