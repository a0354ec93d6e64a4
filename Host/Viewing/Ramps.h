// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ScEng {

inline constexpr std::size_t kRampColors = 256;

/// Colors as 0xRRGGBB, from the lowest value to the highest.
using RampTable = std::array<std::uint32_t, kRampColors>;

const std::vector<std::string>& ListRamps();

/// The gray one for a name that is unknown.
const RampTable& FindRamp(const std::string& name);

}  // namespace ScEng
