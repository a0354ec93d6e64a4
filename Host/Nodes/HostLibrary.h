// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/NodeRecord.h"

namespace ScEng {

/// What the host's own node types share: they belong to no library and have no icons.
inline constexpr LibraryRecord kHostLibrary{.group_code = 1};

}  // namespace ScEng
