// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Interrupt.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <system_error>
#include <utility>

#include "Host/Files/SignalCleanup.h"

namespace {

/// How long work may take to stop. A person waits a second without wondering.
constexpr std::chrono::milliseconds kPatience{600};
/// How long its last words may take.
constexpr std::chrono::milliseconds kSpeech{200};

std::atomic<int> received{0};
std::atomic<bool> is_working{false};
ScEng::Cancellation cancellation;
/// Wakes the watching thread; posting is one of the few things that a signal handler may do.
sem_t watched;

bool OnSignal(int signal) {
  int none = 0;
  const bool is_first = received.compare_exchange_strong(none, signal);
  if (!is_working || !is_first) return false;
  cancellation.Request();
  sem_post(&watched);
  return true;
}

}  // namespace

void Interrupt::Install() {
  sem_init(&watched, 0, 0);
  ScEng::CleanUpOnSignals(OnSignal, ScEng::SignalEnd::kWithExitCode);
}

int Interrupt::GetSignal() { return received; }

Interrupt::Work::Work(std::function<void()> last_words) : last_words_(std::move(last_words)) {
  is_working = true;
  try {
    watch_ = std::thread([this] { Watch(); });
  } catch (const std::system_error&) {
    // Without a thread to spare, the work still stops by itself.
  }
}

Interrupt::Work::~Work() {
  is_working = false;
  {
    const std::lock_guard lock(mutex_);
    has_ended_ = true;
  }
  ended_.notify_all();
  sem_post(&watched);
  if (watch_.joinable()) watch_.join();
}

const ScEng::Cancellation& Interrupt::Work::GetCancellation() const { return cancellation; }

void Interrupt::Work::Speak() {
  // Somebody who does not read what the program writes must not keep it alive.
  struct Speech {
    std::mutex mutex;
    std::condition_variable over;
    bool is_over = false;
  };
  const auto speech = std::make_shared<Speech>();
  try {
    std::thread([speech, words = last_words_] {
      words();
      {
        const std::lock_guard lock(speech->mutex);
        speech->is_over = true;
      }
      speech->over.notify_all();
    }).detach();
  } catch (const std::system_error&) {
    return;
  }
  std::unique_lock lock(speech->mutex);
  speech->over.wait_for(lock, kSpeech, [&] { return speech->is_over; });
}

void Interrupt::Work::Watch() {
  while (sem_wait(&watched) != 0 && errno == EINTR) {
  }
  {
    std::unique_lock lock(mutex_);
    if (ended_.wait_for(lock, kPatience, [&] { return has_ended_; })) return;
  }
  Speak();
  std::raise(received);
}
