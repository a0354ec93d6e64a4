// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue/ToValue.h"

#include <algorithm>

#include "Host/Image/Image.h"
#include "Host/Image/Streaming.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/ToValue/ToValue.cpp"
#include <hwy/foreach_target.h>

#include "Value/Core/PixelLoops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ToValue::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
namespace loops = PixelLoops::HWY_NAMESPACE;

using loops::D;
using loops::V;

/// A colour's brightness, weighted with its opacity.
struct Brightness {
  static constexpr std::size_t kChannels = 4;
  static HWY_INLINE V Load(const float* HWY_RESTRICT pixels) {
    V red;
    V green;
    V blue;
    V opacity;
    hn::LoadInterleaved4(D(), pixels, red, green, blue, opacity);
    const V two = hn::Add(hn::Mul(opacity, green), hn::Mul(opacity, red));
    return hn::Mul(hn::Add(two, hn::Mul(opacity, blue)), hn::Set(D(), 0.33333334F));
  }
  static float LoadOne(const float* pixel) { return ScEng::ValueOfPixel(pixel, ColorMode::kColor); }
};

/// Maps one range onto another and gathers the range of what it is given.
class Mapper {
 public:
  HWY_INLINE Mapper(const ValueRange& source, float low, float high)
      : from_(source.low), scale_(1.0F / (source.high - source.low)), span_(high - low), low_(low) {}

  HWY_INLINE V operator()(V v) {
    const D d;
    found_.Include(v);
    const V place = hn::Mul(hn::Sub(v, hn::Set(d, from_)), hn::Set(d, scale_));
    return hn::Add(hn::Mul(place, hn::Set(d, span_)), hn::Set(d, low_));
  }

  template <class Pixel>
  HWY_INLINE ValueRange GetRange(const float* pixels) const {
    return found_.GetRange<Pixel>(pixels);
  }

 private:
  loops::RangeFinder found_;
  float from_;
  float scale_;
  float span_;
  float low_;
};

template <class Pixel>
ValueRange MapPixels(const float* samples, float* values, std::size_t pixels, const ValueRange& source, float low,
                     float high) {
  Mapper mapper(source, low, high);
  loops::Transform<Pixel>(samples, values, pixels, ScEng::IsStreamed(pixels), mapper);
  return mapper.GetRange<Pixel>(samples);
}

ValueRange MapAny(const float* samples, unsigned color_mode, float* values, std::size_t pixels,
                  const ValueRange& source, float low, float high) {
  switch (color_mode) {
    case ColorMode::kColor: return MapPixels<Brightness>(samples, values, pixels, source, low, high);
    case ColorMode::kSigned: return MapPixels<loops::OneOfFour<2>>(samples, values, pixels, source, low, high);
    case ColorMode::kValue: return MapPixels<loops::OnlyChannel>(samples, values, pixels, source, low, high);
    default: {
      const float scale = 1.0F / (source.high - source.low);
      std::fill(values, values + pixels, (low - source.low) * scale * (high - low) + low);
      return {};
    }
  }
}

ValueRange MeasureAny(const float* samples, unsigned color_mode, std::size_t pixels) {
  switch (color_mode) {
    case ColorMode::kColor: return loops::Measure<Brightness>(samples, pixels);
    case ColorMode::kSigned: return loops::Measure<loops::OneOfFour<2>>(samples, pixels);
    case ColorMode::kValue: return loops::Measure<loops::OnlyChannel>(samples, pixels);
    default: return {};
  }
}

}  // namespace ToValue::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ToValue {

HWY_EXPORT(MapAny);
HWY_EXPORT(MeasureAny);

ValueRange Measure(const float* samples, unsigned color_mode, std::size_t pixels) {
  const auto stride = static_cast<std::size_t>(ColorMode::GetNumChannels(color_mode));
  ValueRange found;
  PixelLoops::ForEachPiece(pixels, [&](std::size_t from, std::size_t count) {
    found.Join(HWY_DYNAMIC_DISPATCH(MeasureAny)(samples + from * stride, color_mode, count));
  });
  return found;
}

ValueRange GetNominalRange(unsigned color_mode, const ValueRange& declared, const ValueRange& measured) {
  switch (color_mode) {
    case ColorMode::kColor: return {0.0F, 1.0F};
    case ColorMode::kSigned: return {-1.0F, 1.0F};
    case ColorMode::kValue: return declared;
    default: return measured;
  }
}

ValueRange ChooseRange(const ValueRange& nominal, const ValueRange& measured, bool auto_level) {
  if (!auto_level) return nominal;
  constexpr float kFlat = 0.0001F;
  return measured.high - measured.low < kFlat ? ValueRange{nominal.low, measured.high} : measured;
}

ValueRange Map(const float* samples, unsigned color_mode, float* values, std::size_t pixels, const ValueRange& source,
               float low, float high) {
  const auto stride = static_cast<std::size_t>(ColorMode::GetNumChannels(color_mode));
  ValueRange found;
  PixelLoops::ForEachPiece(pixels, [&](std::size_t from, std::size_t count) {
    found.Join(
        HWY_DYNAMIC_DISPATCH(MapAny)(samples + from * stride, color_mode, values + from, count, source, low, high));
  });
  return found;
}

}  // namespace ToValue
#endif
