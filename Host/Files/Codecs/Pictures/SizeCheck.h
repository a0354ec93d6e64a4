// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace ScEng {

/// Tells by size alone whether a file can hold the part that its header declares: the clause for one that cannot, else
/// empty. It spares the memory for what is not there, and finds what some readers fill in.
std::string FindShortness(const std::filesystem::path& file, std::string_view format, const OIIO::ImageSpec& spec);

}  // namespace ScEng
