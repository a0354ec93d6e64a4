// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ComponentEdges.h"

#include "Host/Math/Border.h"
#include "Host/Util/ParallelFor.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Components/ComponentEdges.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cmath>

#ifndef VALUE_NODES_COMPONENT_EDGES_ONCE
#define VALUE_NODES_COMPONENT_EDGES_ONCE
namespace ComponentEdges {
namespace {

struct Offset {
  std::ptrdiff_t x;
  std::ptrdiff_t y;
};

// The four of the cross, then the corners.
constexpr Offset kOffsets[] = {{0, -1}, {-1, 0}, {1, 0}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
constexpr std::size_t kCountOfCross = 4;
constexpr std::size_t kCountOfAll = 8;

}  // namespace
}  // namespace ComponentEdges
#endif

HWY_BEFORE_NAMESPACE();
namespace ComponentEdges::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

bool IsFar(const float* pixel, const float* neighbor, std::size_t channels, float tolerance) {
  for (std::size_t channel = 0; channel < channels; ++channel) {
    if (std::abs(pixel[channel] - neighbor[channel]) > tolerance) return true;
  }
  return false;
}

/// Consecutive pixels of one row, and for each neighbour the pixels that lie there.
struct Run {
  const float* pixels;
  const float* neighbors[kCountOfAll];
  std::size_t count;
};

#if HWY_TARGET != HWY_SCALAR

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;
using M = hn::Mask<D>;

/// Which of the samples from `i` on differ too much from a neighbour.
template <std::size_t kNeighbors>
HWY_INLINE M FindFarSamples(const Run& run, std::size_t i, V limit) {
  const D d;
  const V here = hn::LoadU(d, run.pixels + i);
  M is_far = hn::Gt(hn::Abs(hn::Sub(here, hn::LoadU(d, run.neighbors[0] + i))), limit);
  for (std::size_t n = 1; n < kNeighbors; ++n) {
    is_far = hn::Or(is_far, hn::Gt(hn::Abs(hn::Sub(here, hn::LoadU(d, run.neighbors[n] + i))), limit));
  }
  return is_far;
}

/// Which of as many pixels as a vector has lanes do, the first of them at sample `i`.
template <std::size_t kChannels, std::size_t kNeighbors>
HWY_INLINE M FindFarPixels(const Run& run, std::size_t i, V limit) {
  if constexpr (kChannels == 1) {
    return FindFarSamples<kNeighbors>(run, i, limit);
  } else {
    // Two lanes side by side belong to the same pixel.
    const D d;
    const std::size_t half = hn::Lanes(d) * kChannels / 2;
    const V first = hn::VecFromMask(d, FindFarPixels<kChannels / 2, kNeighbors>(run, i, limit));
    const V second = hn::VecFromMask(d, FindFarPixels<kChannels / 2, kNeighbors>(run, i + half, limit));
    return hn::MaskFromVec(hn::Or(hn::ConcatEven(d, second, first), hn::ConcatOdd(d, second, first)));
  }
}

#endif  // A vector of one lane has no pairs of them.

template <std::size_t kChannels, std::size_t kNeighbors>
void MarkRun(const Run& run, float tolerance, const Marks& marks, float* HWY_RESTRICT marked) {
  std::size_t pixel = 0;
#if HWY_TARGET != HWY_SCALAR
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const V limit = hn::Set(d, tolerance);
  const V background = hn::Set(d, marks.background);
  const V edge = hn::Set(d, marks.edge);
  for (; pixel + lanes <= run.count; pixel += lanes) {
    const M is_far = FindFarPixels<kChannels, kNeighbors>(run, pixel * kChannels, limit);
    hn::StoreU(hn::IfThenElse(is_far, edge, background), d, marked + pixel);
  }
#endif
  for (; pixel < run.count; ++pixel) {
    bool is_edge = false;
    for (std::size_t n = 0; n < kNeighbors; ++n) {
      const std::size_t i = pixel * kChannels;
      is_edge = is_edge || IsFar(run.pixels + i, run.neighbors[n] + i, kChannels, tolerance);
    }
    marked[pixel] = is_edge ? marks.edge : marks.background;
  }
}

/// The neighbour of a pixel that lies in another column of the image or, beyond its border, where the rule says; null
/// where there is none.
const float* FindNeighbor(const PixelView& image, bool seamless, std::size_t x, std::size_t y, const Offset& offset) {
  const auto width = static_cast<std::ptrdiff_t>(image.width);
  const auto height = static_cast<std::ptrdiff_t>(image.height);
  std::ptrdiff_t to_x = static_cast<std::ptrdiff_t>(x) + offset.x;
  std::ptrdiff_t to_y = static_cast<std::ptrdiff_t>(y) + offset.y;
  if (seamless) {
    to_x = ScEng::WrapIndex(to_x, width);
    to_y = ScEng::WrapIndex(to_y, height);
  }
  const std::ptrdiff_t index = to_y * width + to_x;
  if (to_y < 0 || to_y >= height || index < 0 || index >= width * height) return nullptr;
  return image.samples + static_cast<std::size_t>(index) * image.channels;
}

template <std::size_t kChannels, std::size_t kNeighbors>
void MarkRow(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t y, float* marked) {
  const float* row = image.samples + y * image.width * kChannels;
  const auto mark_border_pixel = [&](std::size_t x) HWY_ATTR {
    bool is_edge = false;
    for (std::size_t n = 0; n < kNeighbors; ++n) {
      const float* neighbor = FindNeighbor(image, rule.seamless, x, y, kOffsets[n]);
      is_edge = is_edge || (neighbor != nullptr && IsFar(row + x * kChannels, neighbor, kChannels, rule.tolerance));
    }
    marked[x] = is_edge ? marks.edge : marks.background;
  };
  mark_border_pixel(0);
  if (image.width == 1) return;
  mark_border_pixel(image.width - 1);
  if (image.width == 2) return;
  Run inner{row + kChannels, {}, image.width - 2};
  for (std::size_t n = 0; n < kNeighbors; ++n) {
    // Where there is no such row, the left neighbour is looked at once more, which changes nothing.
    const float* neighbor = FindNeighbor(image, rule.seamless, 1, y, kOffsets[n]);
    inner.neighbors[n] = neighbor != nullptr ? neighbor : row;
  }
  MarkRun<kChannels, kNeighbors>(inner, rule.tolerance, marks, marked + 1);
}

template <std::size_t kChannels, std::size_t kNeighbors>
void MarkAllRows(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t from, std::size_t to,
                 float* marked) {
  for (std::size_t y = from; y < to; ++y) {
    MarkRow<kChannels, kNeighbors>(image, rule, marks, y, marked + y * image.width);
  }
}

template <std::size_t kNeighbors>
void MarkAllRowsOf(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t from,
                   std::size_t to, float* marked) {
  switch (image.channels) {
    case 1: return MarkAllRows<1, kNeighbors>(image, rule, marks, from, to, marked);
    case 2: return MarkAllRows<2, kNeighbors>(image, rule, marks, from, to, marked);
    default: return MarkAllRows<4, kNeighbors>(image, rule, marks, from, to, marked);
  }
}

void MarkSomeRows(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t from,
                  std::size_t to, float* marked) {
  switch (rule.neighbors) {
    case Neighbors::kAll: return MarkAllRowsOf<kCountOfAll>(image, rule, marks, from, to, marked);
    case Neighbors::kCross: return MarkAllRowsOf<kCountOfCross>(image, rule, marks, from, to, marked);
  }
}

}  // namespace
}  // namespace ComponentEdges::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ComponentEdges {

HWY_EXPORT(MarkSomeRows);

void MarkRows(const PixelView& image, const NeighborRule& rule, const Marks& marks, std::size_t from, std::size_t to,
              float* marked) {
  if (image.width == 0) return;
  HWY_DYNAMIC_DISPATCH(MarkSomeRows)(image, rule, marks, from, to, marked);
}

void Mark(const PixelView& image, const NeighborRule& rule, const Marks& marks, float* marked) {
  constexpr int kRowsAtATime = 16;
  ParallelFor(0, static_cast<int>(image.height), kRowsAtATime, [&](int from, int to) {
    MarkRows(image, rule, marks, static_cast<std::size_t>(from), static_cast<std::size_t>(to), marked);
  });
}

}  // namespace ComponentEdges
#endif
