// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ScEng {

/// Looks through files of formats whose readers end the process, hang or write beyond their memory when a file is
/// damaged: the clause for one that must not be handed to its reader, else empty.
std::string FindDamage(const std::filesystem::path& file, std::string_view format);

}  // namespace ScEng
