// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Host/Files/Api.h"

namespace ScEng {

/// Why no file can have this path, or nothing. The system ends a path at a NUL character, so that one with such a
/// character would quietly stand for another file.
HOST_FILES_API std::string FindPathProblem(const std::filesystem::path& path);

}  // namespace ScEng
