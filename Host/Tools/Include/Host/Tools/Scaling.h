// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// What becomes of a node's result when each of its input images is reduced by a factor, and its attributes in pixels
/// ("px") with them. Whoever shows a quick preview goes by it.
enum class Scaling : std::uint8_t {
  /// Another picture, or the node does not say.
  kUnknown,
  /// The same picture, reduced.
  kSame,
  /// The same picture, reduced, if the images are masks: nearly all samples are the lowest or the highest one.
  kSameOfMasks,
  /// Its samples are lengths in pixels: reduced, they are smaller by the factor.
  kLengths,
  /// Its samples are changes from one pixel to the next: reduced, they are larger by the factor.
  kSlopes,
};
