// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Host/Util/Api.h"

namespace ScEng {

/// The names that a misspelt word most likely means, the likeliest first; none when nothing is close.
///
/// Letters that are missing, too many, wrong or swapped count, and so do words in another order, words that are left
/// out, beginnings of words, the case of letters, and blanks, "-" and "_" in each other's place. Takes no time that
/// grows with the length of the word.
HOST_UTIL_API std::vector<std::string> FindClosestNames(const std::string& word, const std::vector<std::string>& names,
                                                        std::size_t most = 3);

/// The same for a message: `; the closest is "one"` or `; the closest are "one" and "two"`, empty when nothing is
/// close.
HOST_UTIL_API std::string SuggestClosestNames(const std::string& word, const std::vector<std::string>& names,
                                              std::size_t most = 3);

}  // namespace ScEng
