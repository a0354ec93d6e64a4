// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/TemporaryRegistry.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace ScEng {

struct RegisteredTemporary {
  static constexpr pid_t kFree = 0;
  static constexpr pid_t kBeingFilled = -1;

  /// The process that made the file: one that was forked meanwhile must not remove it.
  std::atomic<pid_t> owner{kBeingFilled};
  int folder = -1;
  char name[32] = {};
  RegisteredTemporary* next = nullptr;
};

namespace {

/// Entries are used again and never freed, so that a handler can walk the list at any time.
std::atomic<RegisteredTemporary*> first_temporary = nullptr;

std::atomic<int> num_delays = 0;
std::atomic<bool> is_ending = false;

static_assert(std::atomic<RegisteredTemporary*>::is_always_lock_free && std::atomic<pid_t>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

RegisteredTemporary* TakeFreeEntry() {
  for (auto* entry = first_temporary.load(); entry != nullptr; entry = entry->next) {
    pid_t expected = RegisteredTemporary::kFree;
    if (entry->owner.compare_exchange_strong(expected, RegisteredTemporary::kBeingFilled)) return entry;
  }
  auto* const entry = new RegisteredTemporary;
  entry->next = first_temporary.load();
  while (!first_temporary.compare_exchange_weak(entry->next, entry)) {
  }
  return entry;
}

}  // namespace

RegisteredTemporary* RegisterTemporary(int folder, const char* name) {
  RegisteredTemporary* const entry = TakeFreeEntry();
  entry->folder = folder;
  std::strncpy(entry->name, name, sizeof entry->name - 1);
  entry->owner = getpid();
  return entry;
}

void ForgetTemporary(RegisteredTemporary* temporary) { temporary->owner = RegisteredTemporary::kFree; }

void RemoveRegisteredTemporaries() {
  const pid_t self = getpid();
  for (auto* entry = first_temporary.load(); entry != nullptr; entry = entry->next) {
    if (entry->owner == self) unlinkat(entry->folder, entry->name, 0);
  }
}

SignalDelay::SignalDelay() {
  sigset_t delayed;
  sigemptyset(&delayed);
  for (const int signal : kEndSignals) sigaddset(&delayed, signal);
  pthread_sigmask(SIG_BLOCK, &delayed, &before_);
  ++num_delays;
  if (!is_ending) return;
  // A handler in another thread is about to end the process.
  --num_delays;
  for (;;) pause();
}

SignalDelay::~SignalDelay() {
  --num_delays;
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool EndSignalDelays() {
  is_ending = true;
  constexpr int kMostMilliseconds = 8000;
  for (int waited = 0; waited < kMostMilliseconds && num_delays > 0; ++waited) poll(nullptr, 0, 1);
  return num_delays == 0;
}

}  // namespace ScEng
