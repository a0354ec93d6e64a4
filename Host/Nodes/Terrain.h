// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Host/Image/Image.h"

/// The height field of the terrain node.
namespace Terrain {

/// Fills a value image with a fractal height field that tiles in both directions, spread over exactly 0 to 1 (all 0
/// when it is flat).
///
/// The sum of `octaves` layers of gradient noise, each of half the wavelength and half the height of the one before.
/// `wavelength` is that of the first in pixels, rounded so that a whole number fits into each side. Gradient noise
/// after K. Perlin, "Improving Noise" (2002), with directions from a hash of cell, layer and seed. The result depends
/// on the arguments only, not on the number of threads.
void Generate(Image& image, std::uint32_t seed, int octaves, double wavelength);

}  // namespace Terrain
