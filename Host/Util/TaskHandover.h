// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef HOST_UTIL_TELLS_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

namespace ScEng {

/// Tells the thread sanitizer what oneTBB guarantees: a task sees everything that was done before it was given, and who
/// waits for tasks sees everything that they did. oneTBB is not built with the sanitizer, nor are the sources here that
/// make its tasks (see CMakeLists.txt). Does nothing in other builds.
class TaskHandover {
 public:
  TaskHandover() = default;
  ~TaskHandover() { Collect(); }
  TaskHandover(const TaskHandover&) = delete;
  TaskHandover& operator=(const TaskHandover&) = delete;

  /// Before a task is given.
  void Give() { Release(given_); }
  /// After tasks were waited for; an exception that leaves the wait leads to the destructor, which does it too.
  void Collect() { Acquire(done_); }

  /// Around a task, on the thread that does it.
  class Task {
   public:
    explicit Task(TaskHandover& handover) : handover_(handover) { Acquire(handover_.given_); }
    ~Task() { Release(handover_.done_); }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

   private:
    TaskHandover& handover_;
  };

 private:
#ifdef HOST_UTIL_TELLS_THREAD_SANITIZER
  static void Release(char& mark) { __tsan_release(&mark); }
  static void Acquire(char& mark) { __tsan_acquire(&mark); }
#else
  static void Release(char&) {}
  static void Acquire(char&) {}
#endif

  // Only their addresses matter.
  char given_ = 0;
  char done_ = 0;
};

}  // namespace ScEng
