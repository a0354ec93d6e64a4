// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <typeinfo>

#include "Host/Image/ValueOperation.h"

namespace ScEng {

/// The loops registered for exactly this class, if any.
std::optional<ValueOperationLoops> FindValueOperationLoops(const std::type_info& type);

}  // namespace ScEng
