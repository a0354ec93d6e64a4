// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/CrashStack.h"

#include <csignal>
#include <new>

namespace {

constexpr std::size_t kStackSize = std::size_t{64} << 10U;

}  // namespace

CrashStack::CrashStack() {
  // A sanitizer gives each thread a stack of its own kind.
  stack_t present{};
  if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) return;
  // Without it the thread works all the same, so that too little memory is no error here.
  memory_.reset(new (std::nothrow) std::byte[kStackSize]);
  if (!memory_) return;
  stack_t own{};
  own.ss_sp = memory_.get();
  own.ss_size = kStackSize;
  if (sigaltstack(&own, nullptr) != 0) memory_.reset();
}

CrashStack::~CrashStack() {
  if (!memory_) return;
  stack_t none{};
  none.ss_flags = SS_DISABLE;
  sigaltstack(&none, nullptr);
}
