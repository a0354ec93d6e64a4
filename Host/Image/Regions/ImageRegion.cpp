// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ImageRegion.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "Host/Image/Regions/EllipseChords.h"
#include "Host/Image/Regions/RegionPlane.h"
#include "Host/Util/ParallelReduce.h"

namespace {

using ScEng::Extreme;
using ScEng::RegionPlane;
using ScEng::RegionStep;

/// The different samples of a plane, as long as there are at most two. All NaN are one.
class FewSamples {
 public:
  /// False when there are too many.
  bool Add(float sample) {
    const std::uint32_t bits = BitsOf(sample);
    if (IsKnown(bits)) return true;
    if (count_ == bits_.size()) return false;
    // A lone sample stands in both places.
    bits_[1] = bits;
    if (count_ == 0) bits_[0] = bits;
    ++count_;
    return true;
  }
  bool Add(const FewSamples& other) {
    for (std::size_t i = 0; i < other.count_; ++i) {
      if (!Add(other.Get(i))) return false;
    }
    return true;
  }
  /// Looks through a piece without branches before it looks closer.
  bool Add(const float* samples, std::ptrdiff_t stride, int count) {
    constexpr int kPiece = 256;
    for (int from = 0; from < count; from += kPiece) {
      const int piece = std::min(kPiece, count - from);
      const float* begin = samples + from * stride;
      if (stride == 1 ? AreKnown(begin, 1, piece) : AreKnown(begin, stride, piece)) continue;
      for (int i = 0; i < piece; ++i) {
        if (!Add(begin[i * stride])) return false;
      }
    }
    return true;
  }

  [[nodiscard]] std::size_t GetCount() const { return count_; }
  [[nodiscard]] float Get(std::size_t i) const { return std::bit_cast<float>(bits_.at(i)); }

 private:
  static std::uint32_t BitsOf(float sample) {
    return std::bit_cast<std::uint32_t>(std::isnan(sample) ? std::numeric_limits<float>::quiet_NaN() : sample);
  }
  [[nodiscard]] bool IsKnown(std::uint32_t bits) const { return count_ > 0 && (bits == bits_[0] || bits == bits_[1]); }
  /// May say no to a NaN that is known by other bits.
  [[nodiscard]] bool AreKnown(const float* samples, std::ptrdiff_t stride, int count) const {
    std::uint32_t strange = 0;
    for (int i = 0; i < count; ++i) {
      const auto bits = std::bit_cast<std::uint32_t>(samples[i * stride]);
      strange |= (bits ^ bits_[0]) != 0 && (bits ^ bits_[1]) != 0 ? 1U : 0U;
    }
    return count_ > 0 && strange == 0;
  }

  std::array<std::uint32_t, 2> bits_{};
  std::size_t count_ = 0;
};

/// The samples of a plane where there are no more than two different ones. Ends at the third.
std::optional<FewSamples> FindFewSamples(const RegionPlane& plane) {
  /// What a range of rows holds; nothing once there are too many.
  struct Found {
    std::optional<FewSamples> few = FewSamples();

    void Include(const Found& other) {
      if (!few || !other.few || !few->Add(*other.few)) few.reset();
    }
  };
  std::atomic<bool> too_many = false;
  constexpr std::size_t kGrainRows = 16;
  const auto look_through = [&](std::size_t from, std::size_t to) {
    Found found;
    for (std::size_t y = from; y < to && !too_many; ++y) {
      if (!found.few->Add(plane.Row(static_cast<int>(y)), plane.pixel_stride, plane.width)) too_many = true;
    }
    if (too_many) found.few.reset();
    return found;
  };
  return ScEng::ParallelReduce<Found>(static_cast<std::size_t>(plane.height), kGrainRows, look_through).few;
}

void ReplacePlane(const RegionPlane& plane, const RegionStep& step) {
  const std::optional<FewSamples> few = FindFewSamples(plane);
  if (!few) {
    ScEng::ReplaceGray(plane, step);
    return;
  }
  if (few->GetCount() < 2) return;
  float winner = few->Get(0);
  float loser = few->Get(1);
  // NaN loses against anything; -0.0 is the smaller zero.
  const bool first_is_larger = winner > loser || (winner == loser && std::signbit(loser));
  const bool first_wins =
      std::isnan(loser) || (!std::isnan(winner) && first_is_larger == (step.extreme == Extreme::kLargest));
  if (!first_wins) std::swap(winner, loser);
  ScEng::ReplaceMask(plane, step, winner, loser);
}

/// The box of an `ImageRegion`, cut to its image.
struct RegionBox {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

void ReplaceBox(Image& image, const RegionBox& box, int channel, float radius_x, float radius_y, bool wrap,
                Extreme extreme) {
  const int channels = image.GetNumChannels();
  if (box.left >= box.right || box.top >= box.bottom || channel < -1 || channel >= channels) return;
  const int width = box.right - box.left;
  const int height = box.bottom - box.top;

  // In a plane that tiles, whatever is further than half of it is also met nearer by, where the ellipse is wider.
  RegionStep step;
  step.chords =
      ScEng::MakeEllipseChords(radius_x, radius_y, wrap ? width / 2 : width - 1, wrap ? height / 2 : height - 1);
  step.wrap = wrap;
  step.extreme = extreme;
  if (step.chords.size() == 1 && step.chords.front() == 0) return;

  RegionPlane plane;
  plane.width = width;
  plane.height = height;
  plane.pixel_stride = channels;
  plane.row_stride = std::ptrdiff_t{image.GetSizeX()} * channels;
  float* corner = image.GetArray() + box.top * plane.row_stride + box.left * plane.pixel_stride;
  for (int i = 0; i < channels; ++i) {
    if (channel != -1 && channel != i) continue;
    plane.samples = corner + i;
    ReplacePlane(plane, step);
  }
}

}  // namespace

void ImageRegion::Init(Image* image, int left, int top, int right, int bottom, int channel) {
  image_ = image;
  left_ = left;
  top_ = top;
  right_ = right;
  bottom_ = bottom;
  channel_ = channel;
}

void ImageRegion::Grow(float radius_x, float radius_y, bool wrap) { Replace(radius_x, radius_y, wrap, true); }

void ImageRegion::Shrink(float radius_x, float radius_y, bool wrap) { Replace(radius_x, radius_y, wrap, false); }

void ImageRegion::Replace(float radius_x, float radius_y, bool wrap, bool by_largest) {
  if (image_ == nullptr) return;
  const RegionBox box{std::max(left_, 0), std::max(top_, 0), std::min(right_, image_->GetSizeX()),
                      std::min(bottom_, image_->GetSizeY())};
  ReplaceBox(*image_, box, channel_, radius_x, radius_y, wrap, by_largest ? Extreme::kLargest : Extreme::kSmallest);
}
