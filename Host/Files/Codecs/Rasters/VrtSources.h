// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "Host/Util/Status.h"

namespace ScEng {

/// Whether the beginning of a file is that of a VRT.
bool IsVrt(const std::filesystem::path& file);

/// Checks what a VRT names, and what VRTs name that it names: only files that are there, in its folder or below. The
/// error is a clause.
Status CheckVrtSources(const std::filesystem::path& file);

/// Whether a file lies in a folder or below it, links followed.
bool IsBelow(const std::filesystem::path& file, const std::filesystem::path& folder);

}  // namespace ScEng
