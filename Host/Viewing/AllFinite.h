// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace ScEng {

/// Written so that compilers make vectors of it: the difference of a number to itself is 0 for finite ones only.
inline bool AllFinite(const float* numbers, std::size_t count) {
  std::uint32_t strange = 0;
  for (std::size_t i = 0; i < count; ++i) strange |= numbers[i] - numbers[i] == 0.0F ? 0U : 1U;
  return strange == 0;
}

}  // namespace ScEng
