// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/PollScope.h"

#include <utility>

namespace ScEng {
namespace {

constexpr auto kPause = std::chrono::milliseconds(10);

constinit thread_local PollScope* innermost = nullptr;

}  // namespace

PollScope::PollScope(std::function<void()> poll)
    : poll_(std::move(poll)), asked_at_(std::chrono::steady_clock::now()), outer_(std::exchange(innermost, this)) {}

PollScope::~PollScope() { innermost = outer_; }

void PollScope::Ask() {
  if (innermost == nullptr) return;
  const auto now = std::chrono::steady_clock::now();
  for (PollScope* scope = innermost; scope != nullptr; scope = scope->outer_) {
    if (!scope->poll_ || now - scope->asked_at_ < kPause) continue;
    scope->asked_at_ = now;
    scope->poll_();
  }
}

}  // namespace ScEng
