// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tbb/global_control.h>

#include <cstddef>

namespace ScEng {

/// oneTBB never runs more workers than the smallest `global_control` allows, by default one per core, so an arena
/// cannot ask for more. The host lifts that limit once; how many threads take part is then the size of each arena.
inline void LiftWorkerLimit() {
  constexpr std::size_t kMostThreads = 1024;
  static const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, kMostThreads);
}

}  // namespace ScEng
