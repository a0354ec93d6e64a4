// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ValuePython {

/// Pixels of four bytes, red, green, blue and opacity, as the bytes of a PNG. Between the rows the evaluation that this
/// thread works for may stop it, by `ScEng::Canceled`. Throws std::runtime_error where the picture cannot be made.
std::string EncodePng(std::size_t width, std::size_t height, const std::uint8_t* pixels);

}  // namespace ValuePython
