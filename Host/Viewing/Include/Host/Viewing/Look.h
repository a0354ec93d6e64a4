// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Viewing/Api.h"

namespace ScEng {

class ViewImage;

/// Where the two values come from that are shown as black and as white.
enum class RangeSource {
  /// 0 to 1, of the signed mode -1 to 1. The mapping never moves, whatever an image holds.
  kAbsolute,
  /// The range that the image declares.
  kDeclared,
  /// The lowest to the highest finite sample of what is shown; opacity does not count among colors.
  kMeasured,
  /// The range that the person who looks has set.
  kCustom,
};

struct ValueRange {
  float low = 0.0F;
  float high = 1.0F;

  friend bool operator==(const ValueRange&, const ValueRange&) = default;
};

enum class Shading {
  /// Values in grey, colour as colour.
  kPlain,
  /// Values by a color ramp.
  kRamp,
  /// Relief lit from the side, by Lambert's law.
  kHillshade,
  /// The steepness of the ground in degrees, 0 as black, 90 as white, or by the ramp where that is not "gray".
  kSlope,
};

/// What is looked at of images with several channels. A channel that an image does not have counts as all of them, and
/// ramps, relief and contours of all of them are those of the value (`ValueOfPixel`).
enum class ShownChannels { kAll, kFirst, kSecond, kThird, kFourth, kValue };

/// The light of hillshade, and how height counts in hillshade and slope.
struct ReliefLight {
  /// Where the light comes from, clockwise from the top of the image.
  double azimuth_degrees = 315.0;
  /// How high it stands over the horizon.
  double altitude_degrees = 45.0;
  /// Heights in pixels per unit of value.
  double exaggeration = 100.0;

  friend bool operator==(const ReliefLight&, const ReliefLight&) = default;
};

/// How an image is looked at. It changes no sample.
struct Look {
  RangeSource range = RangeSource::kDeclared;
  /// Of `RangeSource::kCustom`.
  ValueRange custom = {};
  Shading shading = Shading::kPlain;
  /// A name of `GetRampNames`.
  std::string ramp = "viridis";
  ReliefLight light = {};
  ShownChannels channels = ShownChannels::kAll;
  bool contours = false;
  /// The step of value from one contour to the next; what is not above 0 is a tenth of the range shown.
  double contour_step = 0.0;
  /// Marks NaN (magenta), infinities (orange, and violet for the negative one), and what lies below (blue) and above
  /// (red) the range. Without it, NaN is magenta too, and the others are cut to the range.
  bool marks = false;
  /// Shows the image three by three times, to see its seams.
  bool tiled = false;

  friend bool operator==(const Look&, const Look&) = default;
};

/// The ramps that there are. The first ones can be told apart by colour-blind eyes and grow lighter all the way.
HOST_VIEWING_API const std::vector<std::string>& GetRampNames();

/// The color of a ramp at 0 (low) to 1 (high) as 0xRRGGBB; what lies outside is cut. An unknown ramp is grey.
HOST_VIEWING_API unsigned GetRampColor(const std::string& ramp, double share);

/// The values that are shown as black and white. An image without finite samples has a measured range of 0 to 1.
HOST_VIEWING_API ValueRange GetShownRange(const ViewImage& image, const Look& look);

}  // namespace ScEng
