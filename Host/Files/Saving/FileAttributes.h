// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <filesystem>

#include "Host/Files/Saving/SystemCalls.h"

namespace ScEng {

/// Gives a new file, which only its owner may access so far, the permissions, group, owner, access control list and
/// other extended attributes of the file that it is to replace.
///
/// What this process may not set is left out, and then permissions are cut so that nobody gains access: without the
/// group, group and others keep what both had; without the access control list, the owner alone has access. The bits
/// that run a program as another user and the capabilities of a program are not for new content and go.
ErrorNumber CopyAttributes(const std::filesystem::path& old_file, const struct stat& old, int new_file);

}  // namespace ScEng
