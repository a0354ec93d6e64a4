// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace ScEng {

/// What the boxes around the data of a JPEG 2000 file say.
struct Jp2Boxes {
  /// Where the data lie in the file.
  std::uint64_t data_begin = 0;
  std::uint64_t data_end = 0;
  /// Whether there are boxes at all, and not the data alone.
  bool has_boxes = false;
  bool has_palette = false;
  /// Whether the file says what its channels are.
  bool defines_channels = false;
  /// The channel that is opacity by what the file says, -1 for none.
  int opacity_channel = -1;
  bool is_multiplied = false;
  /// Whether it says where on the ground it lies.
  bool has_place = false;
  /// The clause for a file that is not whole.
  std::string problem;
};

Jp2Boxes ReadJp2Boxes(const std::filesystem::path& file);

}  // namespace ScEng
