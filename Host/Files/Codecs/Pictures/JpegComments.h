// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ScEng {

/// The comments of a JPEG in the order of the file, as far as its markers make sense. A library of metadata that knows
/// one alone would lose the others.
std::vector<std::string> ListJpegComments(const std::filesystem::path& file);

}  // namespace ScEng
