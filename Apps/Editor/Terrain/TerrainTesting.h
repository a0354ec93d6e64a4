// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "Apps/Editor/Terrain/HeightField.h"

/// What the tests of terrains share.
namespace TerrainTest {

inline std::shared_ptr<const ScEng::ViewImage> MakeView(int size_x, int size_y, const std::vector<float>& values) {
  const ImagePtr image = ScEng::MakeRef<Image>(size_x, size_y, ColorMode::kValue, nullptr);
  std::copy(values.begin(), values.end(), image->GetArray());
  return ScEng::ViewImage::Make(*image);
}

inline std::shared_ptr<const HeightField> MakeField(int size_x, int size_y, const std::vector<float>& values) {
  return std::make_shared<const HeightField>(MakeView(size_x, size_y, values));
}

/// Heights by a formula of column and row.
template <class Formula>
std::shared_ptr<const HeightField> MakeField(int size_x, int size_y, const Formula& formula) {
  std::vector<float> values;
  for (int y = 0; y < size_y; ++y) {
    for (int x = 0; x < size_x; ++x) values.push_back(static_cast<float>(formula(x, y)));
  }
  return MakeField(size_x, size_y, values);
}

}  // namespace TerrainTest
