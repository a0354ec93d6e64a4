// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <semaphore.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "Host/Util/Cancellation.h"

/// SIGINT, SIGTERM and SIGHUP. Without a `Work` they end the program at once, with the exit code 128 plus the number of
/// the signal and without fragments of files. While a `Work` lives, the first of them asks it to stop; the second, or
/// the same if the work goes on for too long, ends the program.
class Interrupt {
 public:
  /// For the program, once, before it starts threads.
  static void Install();

  /// The signal that has asked for the end; 0 while none has.
  static int GetSignal();

  /// Work that stops by itself. One at a time.
  class Work {
   public:
    /// `last_words` is called on another thread where the work does not stop in time, just before the process is ended.
    explicit Work(std::function<void()> last_words);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    /// Requested when the work is to stop.
    [[nodiscard]] const ScEng::Cancellation& GetCancellation() const;

   private:
    void Watch();
    void Speak();

    std::function<void()> last_words_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool has_ended_ = false;
    std::thread watch_;
  };
};
