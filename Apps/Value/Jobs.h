// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <thread>

/// Calls `work` on `count` threads at a time, the calling one among them, and waits for all of them. Where the system
/// refuses a thread, half of those that it has granted do the work and the others end first: what has no room for one
/// more thread has none for the memory and threads that the work itself needs. Answers how many did the work. `work`
/// must not throw. Each thread has a stack of its own for the handlers of signals (`CrashStack`).
///
/// `start` starts a thread; it is there for tests, which have it refuse.
std::size_t RunJobs(
    std::size_t count, const std::function<void()>& work,
    const std::function<std::thread(const std::function<void()>&)>& start = [](const std::function<void()>& run) {
      return std::thread(run);
    });
