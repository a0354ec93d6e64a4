// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Host/Viewing/Look.h"

namespace ScEng {

/// The numbers per pixel that a look shows: its values, or so many channels from one on.
struct ShownSamples {
  bool is_value = true;
  int first_channel = 0;
  int count = 1;
};

/// Ramps and relief are of one number per pixel, so of several channels they show the value.
ShownSamples ChooseSamples(unsigned color_mode, const Look& look);

/// The one number per pixel of what the look shows, for contours.
ShownSamples ChooseValue(unsigned color_mode, const Look& look);

}  // namespace ScEng
