// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

namespace ScEng {

/// An image as it is shown: `low` becomes 0 (black) and `high` 1 (white), what lies beyond is cut, and a NaN is black.
/// Where high is not above low, everything is black.
///
/// Modes of four channels keep them: the first three are mapped, opacity is only cut to 0..1. The others become the
/// value mode, from their first channel. The header is otherwise that of the input, with the value range (0, 1). On the
/// calling thread.
HOST_IMAGE_API ImagePtr MakeDisplayImage(const Image& image, float low, float high);

}  // namespace ScEng
