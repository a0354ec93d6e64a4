// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/ReadBounds.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace ScEng {

ReadRequest RequestAll(const FilePart& part, std::size_t index) {
  ReadRequest request;
  request.part = index;
  request.channels.resize(part.channels.size());
  std::iota(request.channels.begin(), request.channels.end(), std::size_t{0});
  request.column_end = part.size_x;
  request.row_end = part.size_y;
  return request;
}

Status CheckRequest(const FileDescription& description, const ReadRequest& request) {
  if (request.part >= description.parts.size()) return Status::Error("it has no such part");
  const FilePart& part = description.parts[request.part];
  if (!part.problem.empty()) return Status::Error(part.problem);
  const bool has_channels = std::all_of(request.channels.begin(), request.channels.end(),
                                        [&](std::size_t channel) { return channel < part.channels.size(); });
  if (!has_channels) return Status::Error("it has no such channel");
  const bool is_inside = 0 <= request.column_begin && request.column_begin <= request.column_end &&
                         request.column_end <= part.size_x && 0 <= request.row_begin &&
                         request.row_begin <= request.row_end && request.row_end <= part.size_y;
  return is_inside ? Status() : Status::Error("it has no such rows and columns");
}

std::size_t CountFloats(const ReadRequest& request) {
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  const auto rows = static_cast<std::size_t>(request.row_end - request.row_begin);
  std::size_t count = 0;
  if (__builtin_mul_overflow(columns * rows, request.channels.size(), &count)) return SIZE_MAX;
  return count > SIZE_MAX / sizeof(float) ? SIZE_MAX / sizeof(float) : count;
}

bool FitsInto(const ReadRequest& request, std::size_t offset, std::size_t pixel_stride, std::size_t row_stride,
              std::size_t count) {
  const auto columns = static_cast<std::size_t>(request.column_end - request.column_begin);
  const auto rows = static_cast<std::size_t>(request.row_end - request.row_begin);
  if (columns == 0 || rows == 0 || request.channels.empty()) return true;
  std::size_t row_offset = 0;
  std::size_t pixel_offset = 0;
  std::size_t end = 0;
  return !__builtin_mul_overflow(rows - 1, row_stride, &row_offset) &&
         !__builtin_mul_overflow(columns - 1, pixel_stride, &pixel_offset) &&
         !__builtin_add_overflow(offset, row_offset, &end) && !__builtin_add_overflow(end, pixel_offset, &end) &&
         !__builtin_add_overflow(end, request.channels.size(), &end) && end <= count;
}

}  // namespace ScEng
