// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Host/Files/FileDescription.h"
#include "Host/Files/ImageFile.h"

namespace ScEng {

/// Which channels of which part of a file are read, and what becomes of them.
struct ChannelSelection {
  std::size_t part = 0;
  /// Indices of channels of the part.
  std::vector<std::size_t> channels;
  /// The layer of the channels, for the header that is stored with it.
  std::string layer;
  /// The mode of the image that the channels make, and for each of its channels the position in `channels` that it
  /// comes from, or a negative number for a constant.
  unsigned color_mode = 0;
  std::array<int, 4> sources{};
  /// Whether the last of `channels` is opacity, by which multiplied colour is divided.
  bool has_opacity = false;
  std::vector<std::string> notes;
};

/// A source that is no channel of the file.
constexpr int kConstantZero = -1;
constexpr int kConstantOne = -2;

/// Chooses by the rules of `ReadOptions`. Nothing, and a clause that lists the parts, layers or channels there are,
/// where what is asked for does not exist or there is no telling.
std::optional<ChannelSelection> SelectChannels(const FileDescription& file, const ReadOptions& options,
                                               std::string& problem);

/// The header that the file stores for the layer, else for the part.
const StoredHeader* FindStoredHeader(const FilePart& part, const std::string& layer);

}  // namespace ScEng
