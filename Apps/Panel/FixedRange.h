// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Viewing/Look.h"

class Image;

/// The range by which a panel shows results, whatever they declare themselves: a result that grows brighter is to look
/// brighter. That is the declared range of what goes in, where the first result can be seen in it, else the declared
/// range of that result. `source` may be null.
[[nodiscard]] ScEng::ValueRange ChooseFixedRange(const Image& result, const Image* source);
