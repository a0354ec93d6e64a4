// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenEXR/ImfThreading.h>

#include <mutex>
#include <system_error>

#include "Host/Util/ParallelRows.h"

namespace ScEng::Exr {

/// Lets the library use as many threads as the host; none of its own for one, or where the system refuses them.
inline void ShareThreads() {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  const std::size_t wanted = GetNumThreads();
  const int count = wanted > 1 ? static_cast<int>(wanted) : 0;
  if (Imf::globalThreadCount() == count) return;
  try {
    Imf::setGlobalThreadCount(count);
  } catch (const std::system_error&) {
    Imf::setGlobalThreadCount(0);
  }
}

}  // namespace ScEng::Exr
