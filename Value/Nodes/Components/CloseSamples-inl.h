// SPDX-License-Identifier: Apache-2.0
//
// Rows of bits that say which pixels of two rows are close: one bit for each pixel, the first in the lowest place.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_INL_H_
#undef VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_INL_H_
#else
#define VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_INL_H_
#endif

#include <hwy/highway.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#ifndef VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_ONCE
#define VALUE_NODES_COMPONENTS_CLOSE_SAMPLES_ONCE
namespace CloseSamples {
inline constexpr std::size_t kWordBits = 64;
}  // namespace CloseSamples
#endif

HWY_BEFORE_NAMESPACE();
namespace CloseSamples::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The mask of one vector fits into a word.
using D = hn::CappedTag<float, kWordBits>;

static_assert(std::endian::native == std::endian::little, "The bytes of masks are read as words.");

/// Sets bit i where samples a[i] and b[i] are close, and clears it elsewhere, also from `count` to the end of `words`.
inline void FindCloseSamples(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b, std::size_t count,
                             float tolerance, std::uint64_t* HWY_RESTRICT words, std::size_t num_words) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const std::size_t step = lanes < 8 ? 8 : lanes;
  const auto limit = hn::Set(d, tolerance);
  auto* bytes = reinterpret_cast<std::uint8_t*>(words);
  for (std::size_t word = count / kWordBits; word < num_words; ++word) words[word] = 0;
  std::size_t i = 0;
  for (; i + step <= count; i += step) {
    if (lanes >= 8) {
      const auto difference = hn::Sub(hn::LoadU(d, a + i), hn::LoadU(d, b + i));
      hn::StoreMaskBits(d, hn::Lt(hn::Abs(difference), limit), bytes + i / 8);
      continue;
    }
    unsigned byte = 0;
    for (std::size_t lane = 0; lane < 8; lane += lanes) {
      const auto difference = hn::Sub(hn::LoadU(d, a + i + lane), hn::LoadU(d, b + i + lane));
      std::uint8_t part = 0;
      hn::StoreMaskBits(d, hn::Lt(hn::Abs(difference), limit), &part);
      byte |= (part & ((1U << lanes) - 1U)) << lane;
    }
    bytes[i / 8] = static_cast<std::uint8_t>(byte);
  }
  for (; i < count; ++i) {
    const bool is_close = tolerance > std::abs(a[i] - b[i]);
    words[i / kWordBits] |= std::uint64_t{is_close} << (i % kWordBits);
  }
}

/// Bit i of the answer, which has 32 bits, is set where bits 2i and 2i + 1 are.
inline std::uint64_t AndPairs(std::uint64_t bits) {
  bits = bits & (bits >> 1) & 0x5555555555555555U;
  bits = (bits | (bits >> 1)) & 0x3333333333333333U;
  bits = (bits | (bits >> 2)) & 0x0F0F0F0F0F0F0F0FU;
  bits = (bits | (bits >> 4)) & 0x00FF00FF00FF00FFU;
  bits = (bits | (bits >> 8)) & 0x0000FFFF0000FFFFU;
  return (bits | (bits >> 16)) & 0x00000000FFFFFFFFU;
}

/// The word moved up by one bit, with the last bit of the word before it in its lowest place.
inline std::uint64_t ShiftUp(std::uint64_t word, std::uint64_t word_before) {
  return (word << 1) | (word_before >> (kWordBits - 1));
}

/// Sets bit i where pixels i of `a` and `b` are close in every channel, and clears it elsewhere, also from `count` to
/// the end of the `num_words` words. There is room for `channels` times as many words, which are written as well.
inline void FindClosePixels(const float* a, const float* b, std::size_t count, std::size_t channels, float tolerance,
                            std::uint64_t* words, std::size_t num_words) {
  num_words *= channels;
  FindCloseSamples(a, b, count * channels, tolerance, words, num_words);
  for (; channels > 1; channels /= 2) {
    num_words /= 2;
    for (std::size_t i = 0; i < num_words; ++i) {
      words[i] = AndPairs(words[2 * i]) | (AndPairs(words[2 * i + 1]) << 32);
    }
  }
}

}  // namespace CloseSamples::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
