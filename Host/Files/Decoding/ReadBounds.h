// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// The request for all samples of a part.
ReadRequest RequestAll(const FilePart& part, std::size_t index);

/// Whether a part, its channels and the rectangle are there; an error otherwise.
Status CheckRequest(const FileDescription& description, const ReadRequest& request);

/// The floats of a rectangle that is there, the largest number where none holds them.
std::size_t CountFloats(const ReadRequest& request);

/// Whether the samples of a request, laid out as `ReadTarget` has it from `offset` on, lie within `count` floats.
bool FitsInto(const ReadRequest& request, std::size_t offset, std::size_t pixel_stride, std::size_t row_stride,
              std::size_t count);

}  // namespace ScEng
