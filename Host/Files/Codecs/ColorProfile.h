// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Host/Files/Api.h"

namespace ScEng {

/// The profile as it may stand in a file with so many channels: readers refuse one for gray samples where there are
/// colors, and the other way round. One that does not suit becomes empty, with a note.
HOST_FILES_API std::vector<std::uint8_t> SuitProfile(const std::vector<std::uint8_t>& profile, int channels,
                                                     std::vector<std::string>& notes);

}  // namespace ScEng
