// SPDX-License-Identifier: Apache-2.0
//
// The extreme of all samples within a shape, where there are two different samples only. A pixel becomes the winner
// when the shape around it holds one. Seen from a row, the nearest winner of a column, j rows away, reaches as far to
// both sides as the shape is wide in its row j, and a row's winners are all that is reached.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include "Host/Image/Distance/VerticalDistances.h"
#include "Host/Image/Regions/RegionPlane.h"
#include "Host/Image/Scratch.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

std::uint32_t BitsOf(float sample) { return std::bit_cast<std::uint32_t>(sample); }

/// Walks along a row and says of each pixel whether a column up to it reaches it.
class Reach {
 public:
  explicit Reach(int left_over) : left_over_(left_over) {}

  /// The next pixel, whose own column reaches `chord` pixels; -1 for not even itself.
  bool Step(int chord) {
    left_over_ = std::max(left_over_ - 1, chord);
    return left_over_ >= 0;
  }

 private:
  int left_over_;
};

class RowSpreader {
 public:
  RowSpreader(const RegionPlane& plane, const RegionStep& step, float winner, float loser)
      : plane_(plane), step_(step), winner_(winner), loser_(loser), own_(Size()), reached_(Size()) {}

  /// Writes row `y` of the plane from its vertical distances.
  void Spread(const float* vertical, int y) {
    const int width = plane_.width;
    for (int x = 0; x < width; ++x) own_[At(x)] = ChordAt(vertical[x]);
    // What the tiles on both sides leave over at the edges of this one.
    int from_left = -1;
    int from_right = -1;
    if (step_.wrap) {
      for (int x = 0; x < width; ++x) {
        from_left = std::max(from_left, own_[At(x)] - (width - 1 - x));
        from_right = std::max(from_right, own_[At(x)] - x);
      }
    }
    Reach rightwards(from_left);
    for (int x = 0; x < width; ++x) reached_[At(x)] = rightwards.Step(own_[At(x)]) ? 1 : 0;
    Reach leftwards(from_right);
    float* row = plane_.Row(y);
    for (int x = width; x-- > 0;) {
      const bool reached = leftwards.Step(own_[At(x)]) || reached_[At(x)] != 0;
      row[x * plane_.pixel_stride] = reached ? winner_ : loser_;
    }
  }

 private:
  static std::size_t At(int x) { return static_cast<std::size_t>(x); }
  [[nodiscard]] std::size_t Size() const { return At(plane_.width); }

  [[nodiscard]] int ChordAt(float distance) const {
    const auto rows = static_cast<float>(step_.chords.size());
    return distance < rows ? step_.chords[static_cast<std::size_t>(distance)] : -1;
  }

  const RegionPlane& plane_;
  const RegionStep& step_;
  float winner_;
  float loser_;
  std::vector<int> own_;
  std::vector<std::uint8_t> reached_;
};

void Seed(const float* samples, std::ptrdiff_t stride, int count, float winner, float* to) {
  const std::uint32_t winner_bits = BitsOf(winner);
  for (int i = 0; i < count; ++i) {
    to[i] = BitsOf(samples[i * stride]) == winner_bits ? 0.0F : std::numeric_limits<float>::infinity();
  }
}

}  // namespace

void ReplaceMask(const RegionPlane& plane, const RegionStep& step, float winner, float loser) {
  const auto width = static_cast<std::size_t>(plane.width);
  const auto height = static_cast<std::size_t>(plane.height);
  const Scratch<float> distances(width * height);
  const auto seed = [&](int x, int y, int count, float* to) {
    const float* from = plane.Row(y) + x * plane.pixel_stride;
    if (plane.pixel_stride == 1) {
      Seed(from, 1, count, winner, to);
    } else {
      Seed(from, plane.pixel_stride, count, winner, to);
    }
  };
  MeasureVerticalDistances(distances.Get(), plane.width, plane.height, step.wrap, seed);
  constexpr std::size_t kGrainRows = 16;
  ParallelRows(height, kGrainRows, [&](std::size_t from, std::size_t to) {
    RowSpreader spreader(plane, step, winner, loser);
    for (std::size_t y = from; y < to; ++y) spreader.Spread(distances.Get() + y * width, static_cast<int>(y));
  });
}

}  // namespace ScEng
