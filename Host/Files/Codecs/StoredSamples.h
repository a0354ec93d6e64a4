// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Files/Api.h"
#include "Host/Files/FileDescription.h"

namespace ScEng {

/// Turns stored numbers into values, each rounded to a float once. A number equal to the channel's nodata becomes NaN;
/// scale and offset are applied, but not to integers that are divided.
///
/// `from` points to the first number, `from_stride` bytes from one to the next; `to_stride` counts floats. Numbers are
/// in the order of bytes of the processor and may be unaligned.
HOST_FILES_API void DecodeSamples(const void* from, std::size_t from_stride, const StoredSamples& stored,
                                  SampleScale scale, float* to, std::size_t to_stride, std::size_t count);

}  // namespace ScEng
