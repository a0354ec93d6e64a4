// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/NodeRecord.h"

/// What all node types of this library share.
inline constexpr LibraryRecord kValueLibrary{
    .name = "Value", .icon_folder = ":/Value/Resources/Icons/", .group_code = 9};
