// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefSoftBevel.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/ReliefSoftBevel.cpp"
#include <hwy/aligned_allocator.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Relief/DiscRings.h"
#include "Value/Nodes/Relief/SoftBlend-inl.h"
#include "Value/Nodes/Relief/SoftForget-inl.h"
#include "Value/Nodes/Relief/SoftPlane.h"
#include "Value/Nodes/Relief/SoftSearch-inl.h"
#include "Value/Nodes/Relief/SoftWorkspace.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {
namespace {

/// Draws rows of tiles.
void DrawTiles(const Plane& plane, const DiscRings& discs, const CellRings& cells, const Phase& phase, std::size_t from,
               std::size_t to, Workspace& workspace, float* output) {
  Search search(plane, discs, cells, phase, to - from, workspace);
  const bool may_forget = AreLevelsFinite(phase);
  const int width = plane.mask.GetSizeX();
  for (int x = 0; x < width; x += kTileColumns) {
    for (std::size_t row = from; row < to; ++row) {
      ScEng::PollCancellation();
      const int y = static_cast<int>(row) * kTileRows;
      GroupSamples samples(plane, x, y, output);
      // What is drawn already, by group.
      std::array<bool, kTileColumns * kTileRows / kGroupRows> is_drawn{};
      search.Look(x, y, row - from, [&](std::size_t group) HWY_ATTR {
        if (!may_forget) return false;
        const auto [left, top] = search.GetPlace(group);
        samples.Load(left, top);
        is_drawn[group] = BlendForgetting(search.GetHistory(group), phase, samples.Get());
        if (is_drawn[group]) samples.Store(left, top);
        return is_drawn[group];
      });
      for (std::size_t group = 0; group < search.GetGroups(); ++group) {
        if (is_drawn[group]) continue;
        const auto [left, top] = search.GetPlace(group);
        samples.Load(left, top);
        (plane.is_growing ? BlendInwards : BlendOutwards)(search.GetHistory(group), phase, samples.Get());
        samples.Store(left, top);
      }
    }
  }
}

}  // namespace
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefBevel {
namespace {

HWY_EXPORT(DrawTiles);

/// Rows of tiles that are drawn together: only the first one has no tile above to learn from.
constexpr std::size_t kGrainTiles = 4;

void Draw(const Image& mask, bool wrap, bool is_growing, const Phase& phase, Image& output) {
  const Plane plane(mask, wrap, phase.to, is_growing);
  const DiscRings discs(phase.to, static_cast<std::ptrdiff_t>(plane.stride));
  const CellRings cells(phase.to, plane.stride / kCell);
  float* samples = output.GetArray();
  const auto rows = (static_cast<std::size_t>(mask.GetSizeY()) + kTileRows - 1) / kTileRows;
  Workspaces workspaces(phase.to);
  ScEng::ParallelRows(rows, kGrainTiles, [&](std::size_t from, std::size_t to) {
    workspaces.Lend([&](Workspace& workspace) {
      HWY_DYNAMIC_DISPATCH(DrawTiles)(plane, discs, cells, phase, from, to, workspace, samples);
    });
  });
}

}  // namespace

bool CanDrawSoft(const Image& mask, int reach) {
  constexpr int kFurthest = 1024;
  if (reach > kFurthest) return false;
  const double border = 2.0 * reach + 8 * kMostLanes;
  const double pixels = (mask.GetSizeX() + border) * (mask.GetSizeY() + border);
  return pixels <= 16777216.0 + 4.0 * static_cast<double>(mask.GetNumSamples());
}

void DrawSoft(const Image& mask, bool wrap, const Rings& rings, int from, int to, Image& output) {
  const int largest = rings.start - from;
  const int smallest = rings.start - to + 1;
  if (largest > 0) {
    Phase growing{std::max(smallest, 1), largest, {}};
    for (int r = growing.from; r <= growing.to; ++r) growing.levels.push_back(GetLevelOfStep(rings, rings.start - r));
    Draw(mask, wrap, true, growing, output);
  }
  if (smallest <= 0) {
    Phase shrinking{std::max(-largest, 0), -smallest, {}};
    for (int r = shrinking.from; r <= shrinking.to; ++r) {
      shrinking.levels.push_back(GetLevelOfStep(rings, rings.start + r));
    }
    Draw(mask, wrap, false, shrinking, output);
  }
}

}  // namespace ReliefBevel
#endif
