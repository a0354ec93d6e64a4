// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/EvaluationScope.h"

#include <chrono>
#include <utility>

#include "Host/Util/WorkContext.h"

namespace ScEng {

const char* Canceled::what() const noexcept { return "The evaluation was cancelled."; }

WorkContext*& GetWorkContext() {
  constinit thread_local WorkContext* context = nullptr;
  return context;
}

void PollCancellation() {
  if (WorkContext* context = GetWorkContext()) context->Poll();
}

bool IsCancellable() { return GetWorkContext() != nullptr; }

void WorkContext::Tell(double fraction) {
  constexpr auto kPause = std::chrono::milliseconds(10);
  if (!progress || fraction <= told) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - told_at < kPause) return;
  told = fraction;
  told_at = now;
  progress(fraction);
}

EvaluationScope::EvaluationScope(const Cancellation* cancellation, Progress progress)
    : context_(std::make_unique<WorkContext>()), outer_(GetWorkContext()) {
  context_->cancellation = cancellation;
  context_->outer = outer_;
  context_->progress = std::move(progress);
  GetWorkContext() = context_.get();
}

EvaluationScope::~EvaluationScope() { GetWorkContext() = outer_; }

bool EvaluationScope::WasStopped() const { return context_->was_stopped.load(std::memory_order_relaxed); }

ProgressPass::ProgressPass(std::size_t total) : context_(GetWorkContext()), total_(total) {
  if (context_ == nullptr) return;
  if (total == 0 || !context_->progress || !context_->IsOwnThread() || context_->is_in_pass) {
    context_ = nullptr;
    return;
  }
  std::size_t& passes = context_->passes;
  begin_ = context_->position;
  share_ = (context_->end - begin_) / (passes == 0 ? 2.0 : static_cast<double>(passes));
  if (passes > 1) --passes;
  context_->is_in_pass = true;
}

ProgressPass::~ProgressPass() {
  if (context_ == nullptr) return;
  context_->is_in_pass = false;
  context_->position = begin_ + share_;
  context_->Tell(context_->position);
}

void ProgressPass::Add(std::size_t steps) {
  if (context_ == nullptr) return;
  const std::size_t done = done_.fetch_add(steps, std::memory_order_relaxed) + steps;
  if (!context_->IsOwnThread()) return;
  context_->Tell(begin_ + share_ * (static_cast<double>(done) / static_cast<double>(total_)));
}

ProgressPart::ProgressPart(double share, std::size_t passes) : context_(GetWorkContext()) {
  if (context_ == nullptr) return;
  if (!context_->IsOwnThread() || context_->is_in_pass) {
    context_ = nullptr;
    return;
  }
  outer_end_ = std::exchange(context_->end, context_->position + share * (context_->end - context_->position));
  outer_passes_ = std::exchange(context_->passes, passes);
}

ProgressPart::~ProgressPart() {
  if (context_ == nullptr) return;
  context_->position = context_->end;
  context_->end = outer_end_;
  context_->passes = outer_passes_;
  context_->Tell(context_->position);
}

}  // namespace ScEng
