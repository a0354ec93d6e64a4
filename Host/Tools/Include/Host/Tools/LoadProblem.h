// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "Host/Tools/Api.h"

namespace ScEng {

/// Why `dlopen` has just refused a file, as a text for people: of a file that is no library at all, that it is none.
HOST_TOOLS_API std::string DescribeLoadProblem(const std::filesystem::path& file);

}  // namespace ScEng
