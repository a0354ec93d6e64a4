// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Files/Api.h"

namespace ScEng {

/// Loads the module of image formats now, and not with the first image file. Libraries behind it start threads when
/// they are loaded, and end the process where the system has no more: a program that starts many threads of its own
/// calls this before. A module that cannot be loaded is an error of whoever reads or writes a file.
HOST_FILES_API void LoadImageFormats();

}  // namespace ScEng
