// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "Host/Validation/Validation.h"

/// The most characters of what is wrong with a library, which may quote the library at length.
constexpr std::size_t kLongestFinding = 600;

/// A name that a library gives itself or a node type, in one line of moderate length (`EscapeLine`).
std::string MakeSafeName(const std::string& name);

/// The report of a check with every text that may come from the library in one line.
ScEng::CheckReport MakeSafe(ScEng::CheckReport report);
