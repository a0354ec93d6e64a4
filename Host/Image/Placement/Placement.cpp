// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Placement.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace ScEng {
namespace {

int To32Bits(std::int64_t number) {
  return static_cast<int>(
      std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

float FindPivot(int pin, std::int64_t first, int size) {
  return static_cast<float>(pin - first) / static_cast<float>(size);
}

/// The pivot of a side whose first pixel is up to 2^21 pixels away from the pin. It is 0 where that is the pin's own
/// place, and for longer ways, which a product in single precision may miss.
float FindShortPivot(int pin, std::int64_t first, int size) {
  constexpr std::int64_t kFurthest = 1 << 21;
  const std::int64_t away = pin - first;
  return away == 0 || away > kFurthest || away < -kFurthest ? 0.0F : FindPivot(pin, first, size);
}

ImageHeader MakeHeader(const Box2I& box, int pin_x, int pin_y, unsigned color_mode) {
  ImageHeader header = ImageHeader::Fresh(To32Bits(box.Width()), To32Bits(box.Height()), color_mode);
  header.pin_x = pin_x;
  header.pin_y = pin_y;
  return header;
}

}  // namespace

ImageHeader PlaceOver(const Box2I& box, const Image& pinned, unsigned color_mode) {
  ImageHeader header = MakeHeader(box, pinned.GetPinX(), pinned.GetPinY(), color_mode);
  header.pivot_x = FindPivot(header.pin_x, box.left, header.size_x);
  header.pivot_y = FindPivot(header.pin_y, box.top, header.size_y);
  return header;
}

ImageHeader PlaceAtCorner(const Box2I& box, unsigned color_mode) {
  ImageHeader header = MakeHeader(box, To32Bits(box.left), To32Bits(box.top), color_mode);
  header.pivot_x = FindShortPivot(header.pin_x, box.left, header.size_x);
  header.pivot_y = FindShortPivot(header.pin_y, box.top, header.size_y);
  return header;
}

}  // namespace ScEng
