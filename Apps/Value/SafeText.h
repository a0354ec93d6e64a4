// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The most characters of a line on standard error.
constexpr std::size_t kLongestLine = 300;

/// Text that is safe to show on a terminal, and valid UTF-8: control characters, characters that change the direction
/// of text or end a line, and bytes that are not UTF-8 are escaped ("\u001b", "\u202e", "\xff"). A line feed stays.
std::string EscapeText(std::string_view text);

/// One line of at most `most` characters (Unicode code points, from 16): escaped like `EscapeText`, line feeds as well.
/// What is too long is cut with "...": first in the middle of its longest words, which are paths and names as a rule
/// (the name of a path's file stays where there is room), then in the middle of the line, so that its start, its end
/// and the short words stay.
std::string EscapeLine(std::string_view text, std::size_t most = kLongestLine);
