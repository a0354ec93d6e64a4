// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Gpu/Api.h"
#include "Host/Gpu/Device.h"
#include "Host/Math/Border.h"
#include "Host/Util/Status.h"

namespace Gpu {

/// A field of heights, z = (value - low) * scale, 0 where that is NaN.
struct HeightField {
  const float* values = nullptr;
  int size_x = 0;
  int size_y = 0;
  double low = 0.0;
  double scale = 1.0;
  ScEng::Border border = ScEng::Border::kExtend;
};

/// Heights up to this, either way, are computed in single precision. A height is rounded by 7.6e-6 at most. That, the
/// rounded shares and the seven roundings of a rise add up to less than 9e-5 one step away, and 1 / (1 + T * T) changes
/// by at most 0.65 times as much: 6e-5 of the 2e-4 that are promised.
inline constexpr double kHighestInSingle = 256.0;

/// Ambient occlusion (see `GpuEngine`) of a field with pixels, steps up to `radius` pixels long (at least 1), into
/// `size_x` times `size_y` floats. `largest_height` is the largest |z|. An error when the device fails; throws
/// `std::bad_alloc` where the field with its margins, or the steps, are too many for what addresses them.
HOST_GPU_API ScEng::Status RunAmbientOcclusion(Device& device, const HeightField& field, double radius,
                                               double largest_height, float* result);

}  // namespace Gpu
