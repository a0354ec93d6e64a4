// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Host/Math/Border.h"

namespace ScEng {

/// The samples of `Filter::ApplyGaussianBlur`. The images are of one size and mode, and not the same one.
///
/// Two passes, along the rows and down the columns, with the rows' result between them in memory. In each, a small
/// kernel is summed tap by tap in single precision, and a large one is a sum of cosines run in double precision, whose
/// cost does not depend on its size. Samples that are not finite take part as the middle of the others; how far they
/// spread depends on the radius alone and is entered at the end.
void GaussianBlur(const Image& in, Image& out, float sigma_x, float sigma_y, Border border);

}  // namespace ScEng
