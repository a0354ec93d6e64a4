// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Util/Status.h"

namespace ValuePython {

// Each throws what pybind11 turns into that exception of the package; with the interpreter's lock.

[[noreturn]] void ThrowNodeError(const std::string& message);
[[noreturn]] void ThrowFileError(const std::string& message);
[[noreturn]] void ThrowValueNodesError(const std::string& message);
[[noreturn]] void ThrowOverflow(const std::string& message);

/// Issues a warning of the package for each note, at the place that called the function of the package.
void Warn(const std::vector<std::string>& notes);
/// The same for the lines of a text.
void WarnLines(const std::string& lines);

}  // namespace ValuePython
