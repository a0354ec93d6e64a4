// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace ScEng {

// Walks through the packed rows of formats whose readers show what is not in the file: memory beyond a palette, or what
// a row held before. Each gives the clause for a file that has such a row, else an empty one.

std::string FindTargaDamage(const std::filesystem::path& file);
std::string FindPsdDamage(const std::filesystem::path& file);

}  // namespace ScEng
