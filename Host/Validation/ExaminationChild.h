// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "Host/Validation/Channel.h"

namespace ScEng {

/// The child's part of an examination. Answers over `channel`, which stays to the end of the process, and ends it.
[[noreturn]] void RunExamination(const std::filesystem::path& library, Channel& channel);

}  // namespace ScEng
