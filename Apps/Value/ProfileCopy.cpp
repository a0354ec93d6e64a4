// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileCopy.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <vector>

#include "Host/Image/SampleRange.h"
#include "Host/Util/ParallelRows.h"

CopySpeed MeasureCopySpeed() {
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  constexpr std::size_t kSamples = std::size_t{16} << 20;
  constexpr Seconds kLongEnough{0.04};
  constexpr int kLeastCopies = 4;

  CopySpeed speed;
  speed.threads = ScEng::GetNumThreads();
  std::vector<float> from;
  std::vector<float> to;
  try {
    from.resize(kSamples, 0.5F);
    to.resize(kSamples);
  } catch (const std::bad_alloc&) {
    return speed;
  }
  speed.block_bytes = kSamples * sizeof(float);
  const Clock::time_point begun = Clock::now();
  Seconds best = Seconds::max();
  for (int copies = 0; copies < kLeastCopies || Clock::now() - begun < kLongEnough; ++copies) {
    const Clock::time_point before = Clock::now();
    const std::size_t share = (kSamples + speed.threads - 1) / speed.threads;
    ScEng::ParallelRows(kSamples, share, [&](std::size_t begin, std::size_t end) {
      ScEng::StreamSamples(from.data() + begin, to.data() + begin, end - begin);
    });
    best = std::min(best, Seconds(Clock::now() - before));
  }
  speed.bytes_per_second = 2.0 * static_cast<double>(speed.block_bytes) / best.count();
  return speed;
}
