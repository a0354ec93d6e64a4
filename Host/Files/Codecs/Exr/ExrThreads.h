// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenEXR/ImfThreading.h>
#include <pthread.h>

#include <mutex>
#include <system_error>

#include "Host/Util/Forks.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng::Exr {

inline std::mutex& GetThreadsMutex() {
  // Never destroyed: a process may fork at its very end.
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

/// Ends the threads while the process forks. In the new one they would be gone, and what is compressed would wait for
/// them for ever; in this one they are made again for the next file.
inline void EndThreadsForForks() {
  [[maybe_unused]] static const int registered = pthread_atfork(
      [] {
        GetThreadsMutex().lock();
        Imf::setGlobalThreadCount(0);
      },
      [] { GetThreadsMutex().unlock(); }, [] { GetThreadsMutex().unlock(); });
}

/// Lets the library use as many threads as the host; none of its own for one, or where the system refuses them.
inline void ShareThreads() {
  EndThreadsForForks();
  const std::lock_guard lock(GetThreadsMutex());
  const std::size_t wanted = GetNumThreads();
  const int count = wanted > 1 ? static_cast<int>(wanted) : 0;
  if (Imf::globalThreadCount() == count) return;
  NoteWorkers();
  try {
    Imf::setGlobalThreadCount(count);
  } catch (const std::system_error&) {
    Imf::setGlobalThreadCount(0);
  }
}

}  // namespace ScEng::Exr
