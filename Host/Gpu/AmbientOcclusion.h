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

/// Heights up to this, either way, are computed in single precision: rounding them and what is made of them stays below
/// a tenth of the promised accuracy.
inline constexpr double kHighestInSingle = 128.0;

/// Ambient occlusion (see `GpuEngine`) of a field with pixels, steps up to `radius` pixels long (at least 1), into
/// `size_x` times `size_y` floats. `largest_height` is the largest |z|. An error when the device fails; throws
/// `std::bad_alloc` where the field with its margins, or the steps, are too many for what addresses them.
HOST_GPU_API ScEng::Status RunAmbientOcclusion(Device& device, const HeightField& field, double radius,
                                               double largest_height, float* result);

}  // namespace Gpu
