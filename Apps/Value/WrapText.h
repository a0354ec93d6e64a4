// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

/// A text in lines of at most 80 characters, broken at blanks and indented. The first line has no indent, since it goes
/// on behind what stands there. A longer word has a line of its own.
std::string Wrap(const std::string& text, std::size_t indent);
