// SPDX-License-Identifier: Apache-2.0
//
// The vector loops that the nodes with a pixel loop of their own share: how a pixel becomes one number, a pass that
// maps those numbers, and a pass that looks for their lowest and highest.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_CORE_PIXEL_LOOPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_CORE_PIXEL_LOOPS_INL_H_
#undef VALUE_CORE_PIXEL_LOOPS_INL_H_
#else
#define VALUE_CORE_PIXEL_LOOPS_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>

#include "Value/Core/ValueRange.h"

HWY_BEFORE_NAMESPACE();
namespace PixelLoops::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

/// The most samples that the pixels of one vector have.
inline constexpr std::size_t kMostSamples = hn::MaxLanes(D()) * 4;

// How a pixel is read: `Load` of one vector of neighbouring pixels, `LoadOne` of a single one, which gives the same
// number. `kChannels` samples lie between two pixels.

/// The only channel.
struct OnlyChannel {
  static constexpr std::size_t kChannels = 1;
  static HWY_INLINE V Load(const float* HWY_RESTRICT pixels) { return hn::LoadU(D(), pixels); }
  static float LoadOne(const float* pixel) { return pixel[0]; }
};

/// The first channel of two.
struct FirstOfTwo {
  static constexpr std::size_t kChannels = 2;
  static HWY_INLINE V Load(const float* HWY_RESTRICT pixels) {
    V first;
    V second;
    hn::LoadInterleaved2(D(), pixels, first, second);
    return first;
  }
  static float LoadOne(const float* pixel) { return pixel[0]; }
};

/// One channel of four.
template <int kChannel>
struct OneOfFour {
  static constexpr std::size_t kChannels = 4;
  static HWY_INLINE V Load(const float* HWY_RESTRICT pixels) {
    V channels[4];
    hn::LoadInterleaved4(D(), pixels, channels[0], channels[1], channels[2], channels[3]);
    return channels[kChannel];
  }
  static float LoadOne(const float* pixel) { return pixel[kChannel]; }
};

/// Sets `to[i] = op(pixel i)` for `pixels` pixels. `to` is aligned to 64 bytes; with `streamed` it is written past the
/// processor's caches, for results that are too large to be read back from them. An `op` that gathers something sees
/// every pixel, some of them more than once.
template <class Pixel, class Op>
HWY_INLINE void Transform(const float* HWY_RESTRICT from, float* HWY_RESTRICT to, std::size_t pixels, bool streamed,
                          Op& op) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  if (streamed) {
    for (; i + lanes <= pixels; i += lanes) hn::Stream(op(Pixel::Load(from + i * Pixel::kChannels)), d, to + i);
    hwy::FlushStream();
  } else {
    for (; i + lanes <= pixels; i += lanes) hn::StoreU(op(Pixel::Load(from + i * Pixel::kChannels)), d, to + i);
  }
  if (i == pixels) return;
  HWY_ALIGN float rest[kMostSamples];
  HWY_ALIGN float results[hn::MaxLanes(D())];
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    const float* pixel = from + std::min(i + lane, pixels - 1) * Pixel::kChannels;
    std::copy(pixel, pixel + Pixel::kChannels, rest + lane * Pixel::kChannels);
  }
  hn::Store(op(Pixel::Load(rest)), d, results);
  std::copy(results, results + (pixels - i), to + i);
}

/// The first of the pixels that is a zero of either sign. There must be one.
template <class Pixel>
float FirstZero(const float* pixels) {
  while (Pixel::LoadOne(pixels) != 0.0F) pixels += Pixel::kChannels;
  return Pixel::LoadOne(pixels);
}

/// Gathers the lowest and highest of the vectors that it is given, but for the sign of a zero.
class RangeFinder {
 public:
  HWY_INLINE RangeFinder() : low_(hn::Set(D(), ValueRange().low)), high_(hn::Set(D(), ValueRange().high)) {}

  HWY_INLINE void Include(V v) {
#if HWY_ARCH_X86
    // One operation with the meaning of the two below: where one of both is NaN, x86 takes the second one. Each waits
    // for the one before it, so that their number counts.
    low_ = hn::Min(v, low_);
    high_ = hn::Max(v, high_);
#else
    low_ = hn::IfThenElse(hn::Lt(v, low_), v, low_);
    high_ = hn::IfThenElse(hn::Gt(v, high_), v, high_);
#endif
  }

  /// What one loop over all of them in order with `<` and `>` finds: NaN is ignored, and of zeros the sign of the
  /// first one counts. `pixels` are those that were included.
  template <class Pixel>
  HWY_INLINE ValueRange GetRange(const float* pixels) const {
    const D d;
    ValueRange range{hn::GetLane(hn::MinOfLanes(d, low_)), hn::GetLane(hn::MaxOfLanes(d, high_))};
    if (range.low == 0.0F) range.low = FirstZero<Pixel>(pixels);
    if (range.high == 0.0F) range.high = FirstZero<Pixel>(pixels);
    return range;
  }

  /// Adds what another one has seen.
  HWY_INLINE void Join(const RangeFinder& other) {
    low_ = hn::Min(low_, other.low_);
    high_ = hn::Max(high_, other.high_);
  }

 private:
  V low_;
  V high_;
};

/// The lowest and highest of `pixels` pixels; see `RangeFinder::GetRange`.
template <class Pixel>
HWY_INLINE ValueRange Measure(const float* HWY_RESTRICT from, std::size_t pixels) {
  const std::size_t lanes = hn::Lanes(D());
  // Two of them, since each minimum waits for the one before it.
  RangeFinder even;
  RangeFinder odd;
  std::size_t i = 0;
  for (; i + 2 * lanes <= pixels; i += 2 * lanes) {
    even.Include(Pixel::Load(from + i * Pixel::kChannels));
    odd.Include(Pixel::Load(from + (i + lanes) * Pixel::kChannels));
  }
  for (; i < pixels; ++i) even.Include(hn::Set(D(), Pixel::LoadOne(from + i * Pixel::kChannels)));
  even.Join(odd);
  return even.GetRange<Pixel>(from);
}

}  // namespace PixelLoops::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
