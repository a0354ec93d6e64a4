// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <compare>
#include <functional>
#include <memory>
#include <vector>

#include "Apps/Editor/Terrain/HeightField.h"

/// One square of a surface: `kQuads` times `kQuads` quads, each of 2^level points width and height.
struct TileKey {
  static constexpr int kQuads = 32;

  int level = 0;
  int x = 0;
  int y = 0;

  /// The points of the image from one quad to the next.
  [[nodiscard]] int GetStep() const { return 1 << level; }
  /// The point of its top left corner.
  [[nodiscard]] int GetLeft() const { return x * kQuads * GetStep(); }
  [[nodiscard]] int GetTop() const { return y * kQuads * GetStep(); }

  friend auto operator<=>(const TileKey&, const TileKey&) = default;
};

/// A box around a part of a surface, in space but for its heights, which are those of the height field.
struct TileBox {
  float left = 0.0F;
  float right = 0.0F;
  float bottom = 0.0F;
  float top = 0.0F;
  float lowest = 0.0F;
  float highest = 0.0F;
};

/// The tiles of a height field: one covers the whole, each has four below it, down to single points.
class TileTree {
 public:
  /// Reads every pixel once, on the threads of the host, each of which asks `should_stop`. Null when it says so; the
  /// field must have a surface.
  static std::shared_ptr<const TileTree> Make(const HeightField& field, const std::function<bool()>& should_stop);

  [[nodiscard]] TileKey GetRoot() const { return {static_cast<int>(levels_.size()) - 1, 0, 0}; }
  /// The tiles below one, of those that lie on the image and have a finite height; none for one of level 0.
  [[nodiscard]] std::vector<TileKey> GetChildren(const TileKey& tile) const;
  [[nodiscard]] bool IsEmpty(const TileKey& tile) const;
  [[nodiscard]] TileBox GetBox(const TileKey& tile) const;
  /// The width of a quad in space.
  [[nodiscard]] float GetQuadSize(const TileKey& tile) const;
  /// No tile has more triangles than this, with the walls around holes and the skirts.
  [[nodiscard]] int GetTrianglesPerTile() const { return triangles_per_tile_; }

 private:
  struct Level {
    int tiles_x = 0;
    int tiles_y = 0;
    std::vector<ScEng::SampleRange> ranges;
  };

  [[nodiscard]] const ScEng::SampleRange& GetRange(const TileKey& tile) const;
  void AddParents();

  int size_x_ = 0;
  int size_y_ = 0;
  double spacing_ = 0.0;
  int triangles_per_tile_ = 0;
  std::vector<Level> levels_;
};
