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
  return *this == nothing;
}

}  // namespace ScEng
