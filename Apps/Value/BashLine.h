// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A command line as bash has it up to the cursor, taken apart by bash's rules of quoting.
struct BashLine {
  /// The words without their quotes, the program's name first. The last one is being typed and may be empty.
  std::vector<std::string> words;
  /// How many bytes of the last word stay as they are: bash replaces only what is behind them, since it also breaks
  /// words at "=" and ":" and behind a quotation mark.
  std::size_t num_kept = 0;
  /// The quotation mark that is open at the cursor; 0 for none.
  char quote = 0;
  /// Whether the last word is the file of a redirection.
  bool is_redirection = false;
};

/// `breaks` are the characters of COMP_WORDBREAKS.
BashLine ReadBashLine(std::string_view line, std::string_view breaks);

/// Text that bash reads as `text`, where a quotation mark is open or (0) is not.
std::string QuoteForBash(std::string_view text, char quote);
