// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// How fast this machine moves samples.
struct CopySpeed {
  /// Bytes read and written in a second; 0 where it could not be measured.
  double bytes_per_second = 0.0;
  std::size_t threads = 1;
  /// Of one block that was copied.
  std::size_t block_bytes = 0;
};

/// Copies a block that is larger than the caches of most processors, with the host's threads and past the caches, as
/// large results are written, for some hundredths of a second; the best copy counts.
CopySpeed MeasureCopySpeed();
