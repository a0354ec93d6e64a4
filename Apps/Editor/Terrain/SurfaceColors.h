// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "Host/Viewing/Look.h"
#include "Host/Viewing/ViewImage.h"

/// Red, green and blue of 8 bits each, and 255.
using SurfaceColor = std::array<std::uint8_t, 4>;

/// What color a surface has before it is lit: that of clay, of an image that is spread over it, and a tint where a mask
/// is set.
class SurfaceColors {
 public:
  static constexpr SurfaceColor kClay{206, 200, 190, 255};
  static constexpr SurfaceColor kTint{222, 104, 48, 255};

  SurfaceColors() = default;
  /// Either image may be null. Of the look of the colors counts how values become colors: range, ramp and channels.
  SurfaceColors(std::shared_ptr<const ScEng::ViewImage> colors, const ScEng::Look& look,
                std::shared_ptr<const ScEng::ViewImage> mask);

  /// The color at a place, each coordinate from 0 to 1 from the top left corner, for points that are `step` of the
  /// width apart. NaN has the color of clay, and masks nothing.
  [[nodiscard]] SurfaceColor GetColor(double x, double y, double step) const;

 private:
  [[nodiscard]] SurfaceColor GetOwnColor(double x, double y, double step) const;
  [[nodiscard]] float GetShare(float value) const;
  [[nodiscard]] float GetMask(double x, double y, double step) const;

  std::shared_ptr<const ScEng::ViewImage> colors_;
  std::shared_ptr<const ScEng::ViewImage> mask_;
  ScEng::ShownChannels channels_ = ScEng::ShownChannels::kAll;
  ScEng::ValueRange range_;
  ScEng::ValueRange mask_range_;
  /// The colors of the range from low to high.
  std::vector<SurfaceColor> ramp_;
};
