// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Host/Viewing/ViewImage.h"

/// The values of an image as the heights of a surface with one point per pixel.
///
/// Heights are in units of the range that the image declares, widened to what it holds: 0 is its lowest value, 1 its
/// highest. In space the longer side of the image reaches from -1 to 1, and its top lies at the greater y.
class HeightField {
 public:
  explicit HeightField(std::shared_ptr<const ScEng::ViewImage> image);

  [[nodiscard]] const ScEng::ViewImage& GetImage() const { return *image_; }
  [[nodiscard]] int GetSizeX() const { return size_x_; }
  [[nodiscard]] int GetSizeY() const { return size_y_; }
  /// Whether there are two points in each direction and any finite value.
  [[nodiscard]] bool HasSurface() const;
  [[nodiscard]] bool HasHoles() const { return has_holes_; }

  /// The lowest and the highest height that there is.
  [[nodiscard]] float GetLowest() const { return lowest_; }
  [[nodiscard]] float GetHighest() const { return highest_; }

  /// The distance of neighboring points in space.
  [[nodiscard]] double GetSpacing() const { return spacing_; }
  [[nodiscard]] double GetPlaceX(double x) const { return (x - (size_x_ - 1) * 0.5) * spacing_; }
  [[nodiscard]] double GetPlaceY(double y) const { return ((size_y_ - 1) * 0.5 - y) * spacing_; }
  /// The point of the image above or below which a place of space lies.
  [[nodiscard]] double GetPointX(double place_x) const { return place_x / spacing_ + (size_x_ - 1) * 0.5; }
  [[nodiscard]] double GetPointY(double place_y) const { return (size_y_ - 1) * 0.5 - place_y / spacing_; }

  /// The height at a point of the image, between the pixels of one of its levels (the last one for those beyond it).
  /// NaN in a hole. Beside the image its edge goes on.
  [[nodiscard]] float GetHeight(int level, double x, double y) const;
  /// The height of one pixel of the image; NaN where it is not finite.
  [[nodiscard]] float GetPixel(int x, int y) const { return Read(levels_.front(), x, y); }

  /// Copies of the image, each half as large as the one before.
  [[nodiscard]] int GetNumLevels() const { return static_cast<int>(levels_.size()); }

  /// The heights of all pixels of a level, row by row.
  struct Heights {
    int size_x = 0;
    int size_y = 0;
    std::vector<float> values;

    [[nodiscard]] std::size_t IndexOf(int x, int y) const {
      return static_cast<std::size_t>(y) * static_cast<std::size_t>(size_x) + static_cast<std::size_t>(x);
    }
    [[nodiscard]] float At(int x, int y) const { return values[IndexOf(x, y)]; }
  };
  [[nodiscard]] Heights CopyLevel(int level) const;

 private:
  [[nodiscard]] float ToHeight(float value) const { return static_cast<float>((value - low_) * per_unit_); }
  [[nodiscard]] float Read(const ScEng::ViewImage::Level& level, int x, int y) const;

  std::shared_ptr<const ScEng::ViewImage> image_;
  std::vector<ScEng::ViewImage::Level> levels_;
  int size_x_;
  int size_y_;
  unsigned color_mode_;
  int channels_;
  // Differences of values can be beyond what a float holds.
  double low_ = 0.0;
  double per_unit_ = 0.0;
  float lowest_ = 0.0F;
  float highest_ = 0.0F;
  bool has_holes_;
  double spacing_;
};
