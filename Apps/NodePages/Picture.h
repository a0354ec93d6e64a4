// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "Host/Image/Image.h"

/// How values become a picture.
struct Look {
  enum class Kind {
    /// `low` is black, `high` is white.
    kGray,
    /// Blue below zero, white at zero, red above; full colour at `high` on either side.
    kSigned,
    /// Every whole number has a colour of its own.
    kLabels,
    /// The colours of the image itself.
    kColor,
  };

  Kind kind = Kind::kGray;
  float low = 0.0F;
  float high = 1.0F;
};

/// "grey LOW HIGH", "signed MOST", "labels" or "color".
std::optional<Look> ParseLook(const std::string& text);

/// A line for the reader: "black is 0, white is 1.25".
std::string DescribeLook(const Look& look);

/// The picture that documents show, of at most 256 pixels a side: large images are averaged over whole blocks of pixels
/// (labels take one pixel of each), small ones enlarged pixel by pixel. What is not finite is shown in magenta. The
/// samples are exact multiples of 1/255.
ImagePtr DrawPicture(const Image& image, const Look& look);

/// Whether two pictures have one size and differ by one step of 8 bit at the most, whatever their modes.
bool LookAlike(const Image& a, const Image& b);
