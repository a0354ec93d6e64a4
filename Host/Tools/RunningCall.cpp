// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/RunningCall.h"

#include <atomic>

#include "Host/Tools/LoadedCode.h"
#include "Host/Util/Forks.h"

namespace ScEng {
namespace {

// The model keeps a signal handler from being the first to touch it, which would allocate memory.
__attribute__((tls_model("initial-exec"))) constinit thread_local RunningCall running;
__attribute__((tls_model("initial-exec"))) constinit thread_local bool helps = true;
// The evaluations of this thread, one in the other.
__attribute__((tls_model("initial-exec"))) constinit thread_local int num_own_evaluations = 0;

std::atomic<int> num_evaluations{0};
// Of the evaluation that began last: enough where there is only one.
std::atomic<const RunningCall*> latest_evaluation{nullptr};

/// In a process that was forked from one whose threads evaluate: those of the others have no end there.
void ForgetOtherEvaluations() {
  num_evaluations = num_own_evaluations;
  latest_evaluation = num_own_evaluations > 0 ? &running : nullptr;
}

}  // namespace

RunningCall RunningCall::Find() {
  if (running.node != nullptr || running.library != nullptr || !helps) return running;
  const RunningCall* const latest = latest_evaluation.load();
  return num_evaluations.load() == 1 && latest != nullptr ? *latest : running;
}

void RunningCall::HelpNobody() { helps = false; }

RunningScope::RunningScope(const RunningCall& call) : outer_(running), evaluates_(call.node != nullptr) {
  if (call.operation != nullptr) running.operation = call.operation;
  if (call.node != nullptr) running.node = call.node;
  if (call.library != nullptr || call.node != nullptr) running.library = call.library;
  if (!evaluates_) return;
  [[maybe_unused]] static const bool is_told_of_forks = [] {
    CallInForks(ForgetOtherEvaluations);
    return true;
  }();
  ++num_own_evaluations;
  latest_evaluation = &running;
  ++num_evaluations;
}

RunningScope::~RunningScope() {
  if (evaluates_) {
    --num_own_evaluations;
    --num_evaluations;
    const RunningCall* own = &running;
    latest_evaluation.compare_exchange_strong(own, nullptr);
  }
  running = outer_;
}

}  // namespace ScEng
