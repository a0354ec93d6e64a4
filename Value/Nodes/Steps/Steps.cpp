// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps/Steps.h"

#include <limits>

#include "Host/Image/Streaming.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Steps/Steps.cpp"
#include <hwy/foreach_target.h>

#include "Value/Core/PixelLoops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Steps::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
namespace loops = PixelLoops::HWY_NAMESPACE;

using loops::D;
using loops::V;

struct Quantizer {
  float low;
  float inverse;
  float levels;
  float spacing;

  HWY_INLINE V operator()(V v) const {
    const D d;
    const V t = hn::Mul(hn::Sub(v, hn::Set(d, low)), hn::Set(d, inverse));
    const V place = hn::Mul(t, hn::Set(d, levels));
    // The floor of a float is a float, so the detour over double precision changes nothing. Instruction sets without
    // rounding lose the sign of a zero.
    const V k = hn::CopySign(hn::Floor(place), place);
    return hn::Add(hn::Mul(k, hn::Set(d, spacing)), hn::Set(d, low));
  }
};

void QuantizeAny(const float* samples, std::size_t stride, float* values, std::size_t pixels, std::int32_t count,
                 float low, float high) {
  const float level = 1.0F / static_cast<float>(count - 1);
  const float span = high - low;
  Quantizer quantizer{low, 1.0F / span, static_cast<float>(count), span * level};
  const bool streamed = ScEng::IsStreamed(pixels);
  switch (stride) {
    case 1: loops::Transform<loops::OnlyChannel>(samples, values, pixels, streamed, quantizer); break;
    case 2: loops::Transform<loops::FirstOfTwo>(samples, values, pixels, streamed, quantizer); break;
    default: loops::Transform<loops::OneOfFour<0>>(samples, values, pixels, streamed, quantizer); break;
  }
}

}  // namespace Steps::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Steps {

HWY_EXPORT(QuantizeAny);

std::int32_t GetCount(float steps) {
  constexpr std::int32_t kFewest = 2;
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  if (!(steps >= 2.0F)) return kFewest;
  // The first float that does not fit is 2 to the 31.
  return steps >= 2147483648.0F ? kMost : static_cast<std::int32_t>(steps);
}

void Quantize(const float* samples, std::size_t stride, float* values, std::size_t pixels, std::int32_t count,
              float low, float high) {
  PixelLoops::ForEachPiece(pixels, [&](std::size_t from, std::size_t piece) {
    HWY_DYNAMIC_DISPATCH(QuantizeAny)(samples + from * stride, stride, values + from, piece, count, low, high);
  });
}

}  // namespace Steps
#endif
