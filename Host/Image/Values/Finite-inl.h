// SPDX-License-Identifier: Apache-2.0
//
// What is a finite number, in vectors. Included once per instruction set, between HWY_BEFORE_NAMESPACE and
// HWY_AFTER_NAMESPACE of the source that uses it; see Highway's quick reference on `foreach_target.h`.

#if defined(HOST_IMAGE_FINITE_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef HOST_IMAGE_FINITE_INL
#undef HOST_IMAGE_FINITE_INL
#else
#define HOST_IMAGE_FINITE_INL
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

HWY_INLINE bool IsFinite(float sample) { return sample - sample == 0.0F; }

/// Notices whether one of the samples that it is shown is NaN or infinite.
template <class D>
class FiniteTest {
 public:
  HWY_INLINE FiniteTest() : strange_(hn::Zero(D())) {}

  // x - x has no bit set for a finite x and is NaN for any other.
  HWY_INLINE void Include(hn::Vec<D> samples) { strange_ = hn::Or(strange_, hn::Sub(samples, samples)); }
  HWY_INLINE void Include(hn::Vec<D> even, hn::Vec<D> odd) {
    strange_ = hn::Or(strange_, hn::Or(hn::Sub(even, even), hn::Sub(odd, odd)));
  }

  [[nodiscard]] HWY_INLINE bool SawNonFinite() const {
    const hn::RebindToUnsigned<D> bits;
    return !hn::AllTrue(bits, hn::Eq(hn::BitCast(bits, strange_), hn::Zero(bits)));
  }

 private:
  hn::Vec<D> strange_;
};

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
