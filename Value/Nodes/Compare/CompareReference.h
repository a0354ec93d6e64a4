// SPDX-License-Identifier: Apache-2.0
//
// The definition of the Compare node's loop, pixel by pixel, that the fast one is held against.
#pragma once

#include <cstdint>

#include "Value/Nodes/Compare/Compare.h"

namespace Compare::Reference {

/// The pixel of an image at a document position; null outside its box.
inline const float* FindPixel(const Image& image, std::int64_t x, std::int64_t y) {
  const ScEng::Box2I box = image.GetBox();
  if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) return nullptr;
  return image.GetConstArray() + ((y - box.top) * image.GetSizeX() + (x - box.left)) * image.GetNumChannels();
}

inline bool Holds(float a, float b, Relation relation) {
  switch (relation) {
    case Relation::kLess: return a < b;
    case Relation::kLessEqual: return a <= b;
    case Relation::kEqual: return a == b;
    case Relation::kDifferent: return a != b;
    case Relation::kGreaterEqual: return a >= b;
    default: return a > b;
  }
}

inline bool HoldsForColors(const float* a, const float* b, const Rounding& rounding, Relation relation) {
  if (a == nullptr || b == nullptr) return false;
  const bool any = relation == Relation::kDifferent;
  for (int channel = 0; channel < 4; ++channel) {
    if (Holds(rounding.Round(a[channel]), rounding.Round(b[channel]), relation) == any) return any;
  }
  return !any;
}

inline void Apply(const Image& a, const Image& b, const Rounding& rounding, Relation relation, const ScEng::Box2I& box,
                  float* results) {
  for (std::int64_t y = box.top; y < box.bottom; ++y) {
    for (std::int64_t x = box.left; x < box.right; ++x) {
      const float* pixel_a = FindPixel(a, x, y);
      const float* pixel_b = FindPixel(b, x, y);
      bool holds = false;
      if (a.GetNumChannels() == 1) {
        holds = Holds(pixel_a != nullptr ? rounding.Round(*pixel_a) : a.GetOutsideValue(),
                      pixel_b != nullptr ? rounding.Round(*pixel_b) : b.GetOutsideValue(), relation);
      } else if (a.GetNumChannels() == 4) {
        holds = HoldsForColors(pixel_a, pixel_b, rounding, relation);
      }
      *results++ = holds ? 1.0F : 0.0F;
    }
  }
}

}  // namespace Compare::Reference
