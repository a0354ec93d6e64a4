// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Regions/RegionKeys.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Regions/RegionKeys.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <limits>

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Not more than kKeyUnit lanes, whatever the processor.
using D = hn::CappedTag<RegionKey, 64>;

void ToKeys(const float* HWY_RESTRICT samples, std::size_t count, bool negate, RegionKey* HWY_RESTRICT keys) {
  const D d;
  const hn::RebindToFloat<D> d_float;
  const auto turn = hn::Set(d, negate ? kNothing : 0);
  const auto magnitude_bits = hn::Set(d, std::numeric_limits<RegionKey>::max());
  const auto infinity = hn::Set(d, RegionKey{0x7F800000});
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto bits = hn::BitCast(d, hn::LoadU(d_float, samples + i));
    const auto turned = hn::Xor(bits, turn);
    // Negative floats grow with the number that their other bits are.
    const auto key = hn::Xor(turned, hn::And(hn::BroadcastSignBit(turned), magnitude_bits));
    const auto is_nan = hn::Gt(hn::And(bits, magnitude_bits), infinity);
    hn::StoreU(hn::IfThenElse(is_nan, hn::Set(d, kNothing), key), d, keys + i);
  }
}

void FromKeys(const RegionKey* HWY_RESTRICT keys, std::size_t count, bool negate, float* HWY_RESTRICT samples) {
  const D d;
  const hn::RebindToFloat<D> d_float;
  const auto turn = hn::Set(d, negate ? kNothing : 0);
  const auto magnitude_bits = hn::Set(d, std::numeric_limits<RegionKey>::max());
  const auto nan = hn::Set(d, RegionKey{0x7FC00000});
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto key = hn::LoadU(d, keys + i);
    const auto turned = hn::Xor(key, hn::And(hn::BroadcastSignBit(key), magnitude_bits));
    const auto bits = hn::IfThenElse(hn::Eq(key, hn::Set(d, kNothing)), nan, hn::Xor(turned, turn));
    hn::StoreU(hn::BitCast(d_float, bits), d_float, samples + i);
  }
}

void DoubleRuns(RegionKey* keys, std::size_t count, std::size_t length) {
  const D d;
  for (std::size_t x = 0; x < count; x += hn::Lanes(d)) {
    hn::StoreU(hn::Max(hn::LoadU(d, keys + x), hn::LoadU(d, keys + x + length)), d, keys + x);
  }
}

void JoinRuns(const RegionKey* HWY_RESTRICT left, const RegionKey* HWY_RESTRICT right, std::size_t count,
              RegionKey* HWY_RESTRICT to) {
  const D d;
  for (std::size_t x = 0; x < count; x += hn::Lanes(d)) {
    hn::Store(hn::Max(hn::LoadU(d, left + x), hn::LoadU(d, right + x)), d, to + x);
  }
}

void TakeIn(const RegionKey* const* rows, std::size_t count, RegionKey* HWY_RESTRICT to) {
  static_assert(kRowsAtOnce == 4);
  const D d;
  const RegionKey* HWY_RESTRICT row0 = rows[0];
  const RegionKey* HWY_RESTRICT row1 = rows[1];
  const RegionKey* HWY_RESTRICT row2 = rows[2];
  const RegionKey* HWY_RESTRICT row3 = rows[3];
  for (std::size_t x = 0; x < count; x += hn::Lanes(d)) {
    const auto upper = hn::Max(hn::Load(d, row0 + x), hn::Load(d, row1 + x));
    const auto lower = hn::Max(hn::Load(d, row2 + x), hn::Load(d, row3 + x));
    hn::Store(hn::Max(hn::Load(d, to + x), hn::Max(upper, lower)), d, to + x);
  }
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {

HWY_EXPORT(ToKeys);
HWY_EXPORT(FromKeys);
HWY_EXPORT(DoubleRuns);
HWY_EXPORT(JoinRuns);
HWY_EXPORT(TakeIn);

RegionKeyLoops::RegionKeyLoops()
    : to_keys(HWY_DYNAMIC_DISPATCH(ToKeys)),
      from_keys(HWY_DYNAMIC_DISPATCH(FromKeys)),
      double_runs(HWY_DYNAMIC_DISPATCH(DoubleRuns)),
      join_runs(HWY_DYNAMIC_DISPATCH(JoinRuns)),
      take_in(HWY_DYNAMIC_DISPATCH(TakeIn)) {}

}  // namespace ScEng
#endif
