// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Compare.h"

#include <cstdlib>
#include <functional>
#include <type_traits>

namespace Compare {
namespace {

/// 10 to the power n by n multiplications in 32-bit arithmetic that wraps.
std::int32_t WrappingPowerOfTen(int n) {
  std::uint32_t power = 1;
  for (int i = 0; i < n; ++i) power *= 10;
  return static_cast<std::int32_t>(power);
}

/// The pixel of an image at a document position; null outside its box.
const float* FindPixel(const Image& image, const ScEng::Box2I& box, std::int64_t x, std::int64_t y) {
  if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) return nullptr;
  return image.GetConstArray() + ((y - box.top) * image.GetSizeX() + (x - box.left)) * image.GetNumChannels();
}

template <class Relation>
bool HoldsForValues(const float* a, const float* b, float outside_a, float outside_b, const Rounding& rounding,
                    Relation relation) {
  return relation(a != nullptr ? rounding.Round(*a) : outside_a, b != nullptr ? rounding.Round(*b) : outside_b);
}

template <class Relation>
bool HoldsForColors(const float* a, const float* b, const Rounding& rounding, Relation relation) {
  if (a == nullptr || b == nullptr) return false;
  // "Different" needs one channel, every other relation all of them.
  constexpr bool kAny = std::is_same_v<Relation, std::not_equal_to<>>;
  for (int channel = 0; channel < 4; ++channel) {
    if (relation(rounding.Round(a[channel]), rounding.Round(b[channel])) == kAny) return kAny;
  }
  return !kAny;
}

template <class Relation>
void ApplyRelation(const Image& a, const Image& b, const Rounding& rounding, Relation relation, const ScEng::Box2I& box,
                   float* results) {
  const int channels = a.GetNumChannels();
  if (channels != 1 && channels != 4) return;
  const ScEng::Box2I box_a = a.GetBox();
  const ScEng::Box2I box_b = b.GetBox();
  for (std::int64_t y = box.top; y < box.bottom; ++y) {
    for (std::int64_t x = box.left; x < box.right; ++x) {
      const float* pixel_a = FindPixel(a, box_a, x, y);
      const float* pixel_b = FindPixel(b, box_b, x, y);
      const bool holds =
          channels == 1 ? HoldsForValues(pixel_a, pixel_b, a.GetOutsideValue(), b.GetOutsideValue(), rounding, relation)
                        : HoldsForColors(pixel_a, pixel_b, rounding, relation);
      *results++ = holds ? 1.0F : 0.0F;
    }
  }
}

}  // namespace

std::int32_t TruncateToInt32(float value) {
  constexpr float kBound = 2147483648.0F;
  if (!(value >= -kBound && value < kBound)) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}

Rounding::Rounding(int precision_index)
    : exponent_(precision_index - 9), power_(static_cast<float>(WrappingPowerOfTen(std::abs(exponent_)))) {}

float Rounding::Round(float value) const {
  if (exponent_ > 0) return static_cast<float>(TruncateToInt32(value / power_ + 0.5F)) * power_;
  if (exponent_ < 0) return static_cast<float>(TruncateToInt32(power_ * value + 0.5F)) / power_;
  return static_cast<float>(TruncateToInt32(value + 0.5F));
}

void Apply(const Image& a, const Image& b, const Rounding& rounding, Relation relation, const ScEng::Box2I& box,
           float* results) {
  switch (relation) {
    case Relation::kLess: ApplyRelation(a, b, rounding, std::less<>(), box, results); break;
    case Relation::kLessEqual: ApplyRelation(a, b, rounding, std::less_equal<>(), box, results); break;
    case Relation::kEqual: ApplyRelation(a, b, rounding, std::equal_to<>(), box, results); break;
    case Relation::kDifferent: ApplyRelation(a, b, rounding, std::not_equal_to<>(), box, results); break;
    case Relation::kGreaterEqual: ApplyRelation(a, b, rounding, std::greater_equal<>(), box, results); break;
    case Relation::kGreater: ApplyRelation(a, b, rounding, std::greater<>(), box, results); break;
  }
}

}  // namespace Compare
