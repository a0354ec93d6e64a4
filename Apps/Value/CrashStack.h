// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>

/// A second stack for the handlers of signals on the calling thread while the object lasts: where the thread's own
/// stack is used up, there is no room for them on it. To be destroyed by the thread that has made it.
class CrashStack {
 public:
  CrashStack();
  ~CrashStack();
  CrashStack(const CrashStack&) = delete;
  CrashStack& operator=(const CrashStack&) = delete;

 private:
  /// Null where the thread has such a stack already, or there is no memory for one.
  std::unique_ptr<std::byte[]> memory_;
};
