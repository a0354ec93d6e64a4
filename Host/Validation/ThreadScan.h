// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <set>
#include <string>

#include "Host/Util/AddressRange.h"

namespace ScEng {

/// The waiting threads of this process, but for the calling one, that return into the range some time: they run code of
/// that library, or wait within it. By their numbers. A thread that computes at this moment is not seen.
std::set<std::string> FindThreadsIn(const AddressRange& range);

}  // namespace ScEng
