// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/SoftPlane.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/SoftPlane.cpp"
#include <hwy/aligned_allocator.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>

#include "Host/Math/Border.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Relief/LargeArray.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, kMostLanes>;
using V = hn::Vec<D>;

/// The numbers of a row of samples, as a phase looks for them.
void Convert(const float* from, std::size_t count, const Plane& plane, float* to) {
  const D d;
  const V zero = hn::Zero(d);
  const V one = hn::Set(d, 1.0F);
  const V nothing = hn::Set(d, plane.signs.nothing);
  const auto convert = [&](V sample) {
    const V positive = hn::IfThenElseZero(hn::Gt(sample, zero), sample);
    const V cut = hn::IfThenElse(hn::Lt(positive, one), positive, one);
    if (plane.is_growing) return cut;
    return hn::IfThenElse(hn::Eq(sample, sample), hn::Neg(cut), nothing);
  };
  std::size_t x = 0;
  for (; x + hn::Lanes(d) <= count; x += hn::Lanes(d)) hn::StoreU(convert(hn::LoadU(d, from + x)), d, to + x);
  for (; x < count; ++x) to[x] = hn::GetLane(convert(hn::Set(d, from[x])));
}

/// The largest numbers of each column in rows [y, end).
void FindLargestOfColumns(const Plane& plane, std::size_t y, std::size_t end, float* columns) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const float* from = plane.samples.get() + y * plane.stride;
  for (std::size_t x = 0; x < plane.stride; x += lanes) {
    V largest = hn::Load(d, from + x);
    for (std::size_t row = 1; row < end - y; ++row)
      largest = hn::Max(largest, hn::Load(d, from + row * plane.stride + x));
    hn::Store(largest, d, columns + x);
  }
}

/// Row `y` of the windows; the lowest and rightmost ones are cut off.
void FillWindows(const Plane& plane, std::size_t y, float* columns) {
  static_assert(DiscRings::kWindow == 16);
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  FindLargestOfColumns(plane, y, std::min(y + DiscRings::kWindow, plane.rows), columns);
  std::fill_n(columns + plane.stride, kMostLanes, plane.signs.nothing);
  const auto widen = [&](std::size_t by, float* to) {
    for (std::size_t x = 0; x < plane.stride; x += lanes) {
      hn::StoreU(hn::Max(hn::Load(d, columns + x), hn::LoadU(d, columns + x + by)), d, to + x);
    }
  };
  // What is read has not been written yet, as all goes from left to right.
  for (const std::size_t by : {1U, 2U, 4U}) widen(by, columns);
  widen(8, plane.windows.get() + y * plane.stride);
}

}  // namespace
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefBevel {
namespace {

HWY_EXPORT(Convert);
HWY_EXPORT(FindLargestOfColumns);
HWY_EXPORT(FillWindows);

constexpr std::size_t kGrainRows = 16;

/// Row `y` of the plane.
void FillRow(const Plane& plane, std::size_t y) {
  float* to = plane.samples.get() + y * plane.stride;
  const auto width = static_cast<std::size_t>(plane.mask.GetSizeX());
  const int height = plane.mask.GetSizeY();
  const auto border = static_cast<std::size_t>(plane.border);
  int row = static_cast<int>(y) - plane.border;
  if (plane.wrap) row = ScEng::WrapIndex(row, height);
  if (row < 0 || row >= height) {
    std::fill_n(to, plane.stride, plane.signs.nothing);
    return;
  }
  const float* from = plane.mask.GetConstArray() + static_cast<std::size_t>(row) * width;
  HWY_DYNAMIC_DISPATCH(Convert)(from, width, plane, to + border);
  if (!plane.wrap) {
    std::fill_n(to, border, plane.signs.nothing);
    std::fill(to + border + width, to + plane.stride, plane.signs.nothing);
    return;
  }
  for (std::size_t x = border; x > 0;) {
    const std::size_t count = std::min(x, width);
    x -= count;
    std::copy_n(to + x + width, count, to + x);
  }
  for (std::size_t x = border + width; x < plane.stride; x += width) {
    std::copy_n(to + x - width, std::min(width, plane.stride - x), to + x);
  }
}

/// Row `y` of the cells.
void FillCells(const Plane& plane, std::size_t y, float* columns, float* to) {
  HWY_DYNAMIC_DISPATCH(FindLargestOfColumns)(plane, y * kCell, (y + 1) * kCell, columns);
  for (std::size_t x = 0; x < plane.stride; x += kCell)
    to[x / kCell] = *std::max_element(columns + x, columns + x + kCell);
}

/// Row `y` of the reaches, from the cells.
void FillReaches(const Plane& plane, std::size_t y, float* to) {
  const std::size_t columns = plane.stride / kCell;
  const std::size_t bottom = std::min(y + kReachRows / kCell, plane.rows / kCell);
  std::vector<float> largest(columns + kReachColumns / kCell, plane.signs.nothing);
  for (std::size_t row = y; row < bottom; ++row) {
    const float* from = plane.cells.data() + row * columns;
    for (std::size_t x = 0; x < columns; ++x) largest[x] = std::max(largest[x], from[x]);
  }
  for (std::size_t x = 0; x < columns; ++x) {
    to[x] = *std::max_element(largest.begin() + static_cast<std::ptrdiff_t>(x),
                              largest.begin() + static_cast<std::ptrdiff_t>(x + kReachColumns / kCell));
  }
}

/// How many pixels lie between those of a tile, [0, size), and those of a cell.
std::ptrdiff_t FindGap(std::ptrdiff_t cell, std::ptrdiff_t size) {
  const std::ptrdiff_t begin = cell * kCell;
  return std::max({std::ptrdiff_t{0}, begin - (size - 1), -(begin + kCell - 1)});
}

}  // namespace

PlaneNumbers::PlaneNumbers(std::size_t count) {
  constexpr int kColumns = 4096;
  // A vector may be read across the end.
  const std::size_t image_rows = (count + kMostLanes + kColumns - 1) / kColumns;
  if (kColumns <= Image::GetMaxSizeX() && image_rows <= static_cast<std::size_t>(Image::GetMaxSizeY())) {
    image_ = std::make_unique<Image>(kColumns, static_cast<int>(image_rows), ColorMode::kValue, nullptr);
    numbers_ = image_->GetArray();
  } else {
    memory_ = MakeLargeArray(count + kMostLanes);
    numbers_ = memory_.get();
  }
}

Plane::Plane(const Image& of_mask, bool does_wrap, int reach, bool does_grow)
    : mask(of_mask),
      wrap(does_wrap),
      is_growing(does_grow),
      signs(does_grow ? kGrowing : kShrinking),
      border((reach + DiscRings::kWindow + kMostLanes) / kMostLanes * kMostLanes + kMostLanes),
      stride(GetLength(of_mask.GetSizeX(), kTileColumns)),
      rows(GetLength(of_mask.GetSizeY(), kTileRows)),
      samples(stride * rows),
      windows(stride * rows),
      cells(stride / kCell * (rows / kCell)),
      reaches(cells.size()) {
  ScEng::ParallelRows(rows, kGrainRows, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) FillRow(*this, y);
  });
  ScEng::ParallelRows(rows / kCell, kGrainRows / kCell, [&](std::size_t from, std::size_t to) {
    const auto columns = MakeLargeArray(stride + kMostLanes);
    for (std::size_t y = from; y < to; ++y) FillCells(*this, y, columns.get(), cells.data() + y * (stride / kCell));
    for (std::size_t y = from * kCell; y < to * kCell; ++y) HWY_DYNAMIC_DISPATCH(FillWindows)(*this, y, columns.get());
  });
  ScEng::ParallelRows(rows / kCell, kGrainRows, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) FillReaches(*this, y, reaches.data() + y * (stride / kCell));
  });
}

std::size_t Plane::GetLength(int size, int tile) const {
  const int tiles = (size + tile - 1) / tile;
  return static_cast<std::size_t>(border) * 2 + static_cast<std::size_t>(tiles) * static_cast<std::size_t>(tile);
}

CellRings::CellRings(int radius, std::size_t stride) {
  belts_.resize(static_cast<std::size_t>(DiscRings::GetBelt(std::max(radius, 1))) + 1);
  const std::ptrdiff_t reach = radius / kCell + 1;
  for (std::ptrdiff_t y = -reach; y <= reach + kTileRows / kCell; ++y) {
    for (std::ptrdiff_t x = -reach; x <= reach + kTileColumns / kCell; ++x) {
      const auto gap_x = static_cast<double>(FindGap(x, kTileColumns));
      const auto gap_y = static_cast<double>(FindGap(y, kTileRows));
      const double square = gap_x * gap_x + gap_y * gap_y;
      if (square > static_cast<double>(radius) * radius) continue;
      const int ring = std::max(static_cast<int>(std::sqrt(square)), 1);
      // Rounded down, which may be a belt too early.
      belts_[static_cast<std::size_t>(DiscRings::GetBelt(ring))].push_back(y * static_cast<std::ptrdiff_t>(stride) + x);
    }
  }
}

float CellRings::FindLargest(const Plane& plane, int belt, std::size_t at) const {
  float largest = plane.signs.nothing;
  const float* cells = plane.cells.data() + at;
  for (const std::ptrdiff_t step : belts_[static_cast<std::size_t>(belt)]) largest = std::max(largest, cells[step]);
  return largest;
}

}  // namespace ReliefBevel
#endif
