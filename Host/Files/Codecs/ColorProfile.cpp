// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/ColorProfile.h"

#include <algorithm>
#include <string_view>

namespace ScEng {

std::vector<std::uint8_t> SuitProfile(const std::vector<std::uint8_t>& profile, int channels,
                                      std::vector<std::string>& notes) {
  constexpr std::ptrdiff_t kSpacePosition = 16;
  constexpr std::size_t kHeaderSize = 128;
  if (profile.empty()) return {};
  const bool is_gray = channels <= 2;
  const std::string_view space = is_gray ? "GRAY" : "RGB ";
  if (profile.size() >= kHeaderSize && std::equal(space.begin(), space.end(), profile.begin() + kSpacePosition)) {
    return profile;
  }
  notes.push_back(std::string("the color profile does not describe ") + (is_gray ? "gray" : "RGB") +
                  " samples and is left out");
  return {};
}

}  // namespace ScEng
