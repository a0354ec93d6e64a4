// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "Host/Files/Codecs/StoredSamples.h"

namespace ScEng {

/// Which numbers the samples of a channel are, where they do not use the whole of their type.
struct SampleNumbers {
  /// The number that stands for 1; zero for the largest of the type.
  std::uint64_t largest = 0;
  /// Whether zero stands for 1 and the largest number for 0.
  bool is_inverted = false;

  bool operator==(const SampleNumbers&) const = default;
};

/// The largest number of some bits.
constexpr std::uint64_t GetLargestOf(unsigned bits) {
  return bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
}

/// As the function of that name for samples that use the whole of their type. Numbers that are not divided are those of
/// the file, inverted or not.
void DecodeSamples(const void* from, std::size_t from_stride, const StoredSamples& stored, const SampleNumbers& numbers,
                   SampleScale scale, float* to, std::size_t to_stride, std::size_t count);

}  // namespace ScEng
