// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ImageMetadata.h"

#include <algorithm>

namespace ScEng {

const MetadataEntry* ImageMetadata::Find(std::string_view name) const {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.name == name; });
  return found == entries.end() ? nullptr : &*found;
}

bool ImageMetadata::IsEmpty() const {
  ImageMetadata nothing;
  nothing.had_opacity = had_opacity;
  nothing.exr_compression = exr_compression;
  return *this == nothing;
}

std::shared_ptr<const ImageMetadata> MoveMetadata(const std::shared_ptr<const ImageMetadata>& metadata,
                                                  std::int64_t columns, std::int64_t rows) {
  if (!metadata || (columns == 0 && rows == 0)) return metadata;
  auto moved = std::make_shared<ImageMetadata>(*metadata);
  if (moved->georeference && moved->georeference->transform) {
    auto& t = *moved->georeference->transform;
    const auto x = static_cast<double>(columns);
    const auto y = static_cast<double>(rows);
    t[0] -= x * t[1] + y * t[2];
    t[3] -= x * t[4] + y * t[5];
  }
  if (moved->display_window) {
    moved->display_window->left += columns;
    moved->display_window->right += columns;
    moved->display_window->top += rows;
    moved->display_window->bottom += rows;
  }
  return moved;
}

}  // namespace ScEng
