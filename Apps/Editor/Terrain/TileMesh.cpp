// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileMesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "Apps/Editor/Terrain/SlopeMap.h"

namespace {

constexpr int kQuads = TileKey::kQuads;
/// The points of a tile in a row, and one more at each end.
constexpr int kPoints = kQuads + 3;
constexpr std::uint16_t kNoVertex = 0xFFFF;

/// Places along one side of a tile, counted from one before the tile. The last quad ends where the image does.
class TileAxis {
 public:
  TileAxis(int start, int step, int size) : start_(start), step_(step), size_(size) {}
  [[nodiscard]] int GetPoint(int i) const { return std::clamp(start_ + (i - 1) * step_, 0, size_ - 1); }
  /// Whether there is a quad from this place to the next.
  [[nodiscard]] bool HasQuad(int i) const {
    const int first = start_ + (i - 1) * step_;
    return first >= 0 && first < size_ - 1;
  }

 private:
  int start_;
  int step_;
  int size_;
};

class TileBuilder {
 public:
  TileBuilder(const HeightField& field, const SurfaceColors& colors, const TileKey& tile, const TileBox& box)
      : field_(field),
        colors_(colors),
        level_(tile.level),
        columns_(tile.GetLeft(), tile.GetStep(), field.GetSizeX()),
        rows_(tile.GetTop(), tile.GetStep(), field.GetSizeY()),
        skirt_((box.highest - box.lowest) * 0.5F + 0.002F),
        color_step_(static_cast<double>(tile.GetStep()) / field.GetSizeX()) {
    indices_.fill(kNoVertex);
    for (int row = 0; row < kPoints; ++row) {
      for (int column = 0; column < kPoints; ++column) {
        heights_[At(column, row)] = field.GetHeight(level_, columns_.GetPoint(column), rows_.GetPoint(row));
      }
    }
  }

  TileMesh Build() {
    for (int row = 1; row <= kQuads; ++row) {
      for (int column = 1; column <= kQuads; ++column) {
        if (HasQuad(column, row)) AddQuad(column, row);
      }
    }
    return std::move(mesh_);
  }

 private:
  static std::size_t At(int column, int row) { return static_cast<std::size_t>(row * kPoints + column); }

  [[nodiscard]] float GetHeight(int column, int row) const { return heights_[At(column, row)]; }
  [[nodiscard]] bool HasQuad(int column, int row) const {
    return columns_.HasQuad(column) && rows_.HasQuad(row) &&
           std::isfinite(GetHeight(column, row) + GetHeight(column + 1, row) + GetHeight(column, row + 1) +
                         GetHeight(column + 1, row + 1));
  }

  /// How far a place lies above the mean of its surroundings, in a copy of the image about so many pixels wide.
  [[nodiscard]] float GetRelief(float height, int pixels, double x, double y) const {
    const double points = std::max(field_.GetSizeX(), field_.GetSizeY()) / static_cast<double>(pixels);
    if (points < 2.0) return 0.0F;
    const float mean = field_.GetHeight(std::ilogb(points), x, y);
    return std::isfinite(mean) ? (height - mean) * static_cast<float>(pixels) * 0.25F : 0.0F;
  }

  std::uint16_t Add(const TerrainVertex& vertex) {
    mesh_.vertices.push_back(vertex);
    return static_cast<std::uint16_t>(mesh_.vertices.size() - 1);
  }

  std::uint16_t FindVertex(int column, int row) {
    std::uint16_t& index = indices_[At(column, row)];
    if (index != kNoVertex) return index;
    const int x = columns_.GetPoint(column);
    const int y = rows_.GetPoint(row);
    TerrainVertex vertex;
    vertex.x = static_cast<float>(field_.GetPlaceX(x));
    vertex.y = static_cast<float>(field_.GetPlaceY(y));
    vertex.height = GetHeight(column, row);
    vertex.slope_x = FindSlope({GetHeight(column - 1, row), vertex.height, GetHeight(column + 1, row)},
                               {field_.GetPlaceX(columns_.GetPoint(column - 1)), field_.GetPlaceX(x),
                                field_.GetPlaceX(columns_.GetPoint(column + 1))});
    vertex.slope_y = FindSlope(
        {GetHeight(column, row - 1), vertex.height, GetHeight(column, row + 1)},
        {field_.GetPlaceY(rows_.GetPoint(row - 1)), field_.GetPlaceY(y), field_.GetPlaceY(rows_.GetPoint(row + 1))});
    vertex.relief = GetRelief(vertex.height, 64, x, y) + GetRelief(vertex.height, 256, x, y);
    vertex.color = colors_.GetColor((x + 0.5) / field_.GetSizeX(), (y + 0.5) / field_.GetSizeY(), color_step_);
    index = Add(vertex);
    return index;
  }

  void AddTriangle(std::uint16_t a, std::uint16_t b, std::uint16_t c) {
    mesh_.triangles.insert(mesh_.triangles.end(), {a, b, c});
  }
  void AddLine(std::uint16_t a, std::uint16_t b) { mesh_.lines.insert(mesh_.lines.end(), {a, b}); }

  void AddQuad(int column, int row) {
    const std::uint16_t top_left = FindVertex(column, row);
    const std::uint16_t top_right = FindVertex(column + 1, row);
    const std::uint16_t bottom_left = FindVertex(column, row + 1);
    const std::uint16_t bottom_right = FindVertex(column + 1, row + 1);
    // The flatter diagonal follows ridges and valleys.
    const bool falls = std::abs(GetHeight(column, row) - GetHeight(column + 1, row + 1)) <=
                       std::abs(GetHeight(column + 1, row) - GetHeight(column, row + 1));
    AddTriangle(top_left, bottom_left, falls ? bottom_right : top_right);
    AddTriangle(falls ? top_left : bottom_left, bottom_right, top_right);
    AddLine(top_left, top_right);
    AddLine(top_left, bottom_left);
    AddLine(falls ? top_left : top_right, falls ? bottom_right : bottom_left);
    AddSide(top_left, top_right, HasQuad(column, row - 1), row == 1, 0.0F, 1.0F);
    AddSide(bottom_left, top_left, HasQuad(column - 1, row), column == 1, -1.0F, 0.0F);
    const bool has_next = AddSide(top_right, bottom_right, HasQuad(column + 1, row), column == kQuads, 1.0F, 0.0F);
    const bool has_below = AddSide(bottom_right, bottom_left, HasQuad(column, row + 1), row == kQuads, 0.0F, -1.0F);
    if (!has_next) AddLine(top_right, bottom_right);
    if (!has_below) AddLine(bottom_left, bottom_right);
  }

  /// One side of a quad, which looks in a direction. Answers whether a quad lies behind it.
  bool AddSide(std::uint16_t from, std::uint16_t to, bool has_neighbor, bool is_rim, float look_x, float look_y) {
    if (!has_neighbor) {
      AddWall(from, to, look_x, look_y);
    } else if (is_rim) {
      const std::uint16_t low_from = AddLower(from);
      const std::uint16_t low_to = AddLower(to);
      AddTriangle(from, low_from, low_to);
      AddTriangle(from, low_to, to);
    }
    return has_neighbor;
  }

  std::uint16_t AddLower(std::uint16_t upper) {
    TerrainVertex vertex = mesh_.vertices[upper];
    vertex.height -= skirt_;
    return Add(vertex);
  }

  void AddWall(std::uint16_t from, std::uint16_t to, float look_x, float look_y) {
    std::array<std::uint16_t, 4> corners{};
    for (std::size_t i = 0; i < corners.size(); ++i) {
      TerrainVertex vertex = mesh_.vertices[i % 2 == 0 ? from : to];
      vertex.slope_x = look_x;
      vertex.slope_y = look_y;
      vertex.relief = 0.0F;
      vertex.kind = {255, static_cast<std::uint8_t>(i < 2 ? 0 : 255), 0, 0};
      corners[i] = Add(vertex);
    }
    AddTriangle(corners[0], corners[2], corners[3]);
    AddTriangle(corners[0], corners[3], corners[1]);
  }

  const HeightField& field_;
  const SurfaceColors& colors_;
  int level_;
  TileAxis columns_;
  TileAxis rows_;
  float skirt_;
  double color_step_;
  std::array<float, static_cast<std::size_t>(kPoints) * kPoints> heights_{};
  std::array<std::uint16_t, static_cast<std::size_t>(kPoints) * kPoints> indices_{};
  TileMesh mesh_;
};

}  // namespace

TileMesh BuildTile(const HeightField& field, const SurfaceColors& colors, const TileKey& tile, const TileBox& box) {
  return TileBuilder(field, colors, tile, box).Build();
}
