// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/RunningCall.h"

#include <atomic>

#include "Host/Tools/LoadedCode.h"

namespace ScEng {
namespace {

// The model keeps a signal handler from being the first to touch it, which would allocate memory.
__attribute__((tls_model("initial-exec"))) constinit thread_local RunningCall running;
__attribute__((tls_model("initial-exec"))) constinit thread_local bool helps = true;

std::atomic<int> num_evaluations{0};
// Of the evaluation that began last: enough where there is only one.
std::atomic<const RunningCall*> latest_evaluation{nullptr};

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
  latest_evaluation = &running;
  ++num_evaluations;
}

RunningScope::~RunningScope() {
  if (evaluates_) {
    --num_evaluations;
    const RunningCall* own = &running;
    latest_evaluation.compare_exchange_strong(own, nullptr);
  }
  running = outer_;
}

}  // namespace ScEng
