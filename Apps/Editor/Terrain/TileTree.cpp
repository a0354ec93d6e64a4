// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileTree.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <utility>

#include "Host/Util/ParallelRows.h"

namespace {

constexpr int kQuads = TileKey::kQuads;
constexpr int kSurfaceTriangles = 2 * kQuads * kQuads;
constexpr int kSkirtTriangles = 4 * kQuads * 2;
// A hole takes quads away two by two, and so has at most two walls for each; a quad has at most four. Most triangles
// are there when a third of the quads is left.
constexpr int kTrianglesWithHoles = 10 * kQuads * kQuads / 3 + kSkirtTriangles;

int CountTiles(int points) { return (points - 1 + kQuads - 1) / kQuads; }

ScEng::SampleRange MeasureTile(const HeightField& field, const TileKey& tile) {
  ScEng::SampleRange range;
  const int right = std::min(tile.GetLeft() + kQuads, field.GetSizeX() - 1);
  const int bottom = std::min(tile.GetTop() + kQuads, field.GetSizeY() - 1);
  for (int y = tile.GetTop(); y <= bottom; ++y) {
    for (int x = tile.GetLeft(); x <= right; ++x) {
      const float height = field.GetPixel(x, y);
      // NaN is below and above nothing.
      if (height < range.low) range.low = height;
      if (height > range.high) range.high = height;
    }
  }
  return range;
}

}  // namespace

std::shared_ptr<const TileTree> TileTree::Make(const HeightField& field, const std::function<bool()>& should_stop) {
  auto tree = std::make_shared<TileTree>();
  tree->size_x_ = field.GetSizeX();
  tree->size_y_ = field.GetSizeY();
  tree->spacing_ = field.GetSpacing();
  tree->triangles_per_tile_ = field.HasHoles() ? kTrianglesWithHoles : kSurfaceTriangles + kSkirtTriangles;
  Level finest{CountTiles(field.GetSizeX()), CountTiles(field.GetSizeY()), {}};
  const auto tiles_x = static_cast<std::size_t>(finest.tiles_x);
  finest.ranges.resize(tiles_x * static_cast<std::size_t>(finest.tiles_y));
  std::atomic<bool> has_stopped = false;
  ScEng::ParallelRows(static_cast<std::size_t>(finest.tiles_y), 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) {
      if (should_stop && should_stop()) has_stopped = true;
      if (has_stopped) return;
      for (std::size_t x = 0; x < tiles_x; ++x) {
        finest.ranges[y * tiles_x + x] = MeasureTile(field, {0, static_cast<int>(x), static_cast<int>(y)});
      }
    }
  });
  if (has_stopped) return nullptr;
  tree->levels_.push_back(std::move(finest));
  tree->AddParents();
  return tree;
}

void TileTree::AddParents() {
  while (levels_.back().ranges.size() > 1) {
    const Level& below = levels_.back();
    Level level{(below.tiles_x + 1) / 2, (below.tiles_y + 1) / 2, {}};
    level.ranges.resize(static_cast<std::size_t>(level.tiles_x) * static_cast<std::size_t>(level.tiles_y));
    for (int y = 0; y < below.tiles_y; ++y) {
      for (int x = 0; x < below.tiles_x; ++x) {
        const auto parent =
            static_cast<std::size_t>(y / 2) * static_cast<std::size_t>(level.tiles_x) + static_cast<std::size_t>(x / 2);
        level.ranges[parent].Include(GetRange({static_cast<int>(levels_.size()) - 1, x, y}));
      }
    }
    levels_.push_back(std::move(level));
  }
}

const ScEng::SampleRange& TileTree::GetRange(const TileKey& tile) const {
  const Level& level = levels_[static_cast<std::size_t>(tile.level)];
  return level.ranges[static_cast<std::size_t>(tile.y) * static_cast<std::size_t>(level.tiles_x) +
                      static_cast<std::size_t>(tile.x)];
}

bool TileTree::IsEmpty(const TileKey& tile) const { return GetRange(tile).IsEmpty(); }

std::vector<TileKey> TileTree::GetChildren(const TileKey& tile) const {
  std::vector<TileKey> children;
  if (tile.level == 0) return children;
  const Level& level = levels_[static_cast<std::size_t>(tile.level) - 1];
  for (int y = 2 * tile.y; y < std::min(2 * tile.y + 2, level.tiles_y); ++y) {
    for (int x = 2 * tile.x; x < std::min(2 * tile.x + 2, level.tiles_x); ++x) {
      const TileKey child{tile.level - 1, x, y};
      if (!IsEmpty(child)) children.push_back(child);
    }
  }
  return children;
}

TileBox TileTree::GetBox(const TileKey& tile) const {
  const int extent = kQuads * tile.GetStep();
  const auto place = [this](int point, int size) {
    return static_cast<float>((std::min(point, size - 1) - (size - 1) * 0.5) * spacing_);
  };
  TileBox box;
  box.left = place(tile.GetLeft(), size_x_);
  box.right = place(tile.GetLeft() + extent, size_x_);
  box.top = -place(tile.GetTop(), size_y_);
  box.bottom = -place(tile.GetTop() + extent, size_y_);
  box.lowest = GetRange(tile).low;
  box.highest = GetRange(tile).high;
  return box;
}

float TileTree::GetQuadSize(const TileKey& tile) const { return static_cast<float>(spacing_ * tile.GetStep()); }
