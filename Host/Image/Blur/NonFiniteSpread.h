// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Host/Math/Border.h"

namespace ScEng {

/// Enters NaN and infinities into a blurred image as the two weighted sums, along the rows and down the columns, would
/// have them: a NaN in reach gives NaN, infinities of both signs give NaN, else an infinity in reach gives itself. All
/// other samples of `out` stay. Exact, and linear in the pixels whatever the reach.
void SpreadNonFinite(const Image& in, Image& out, float sigma_x, float sigma_y, Border border);

}  // namespace ScEng
