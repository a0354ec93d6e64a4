// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/WrapText.h"

#include <algorithm>

std::string Wrap(const std::string& text, std::size_t indent) {
  constexpr std::size_t kWidth = 80;
  // The words go to a line only where they fit; blanks within it stay as they are.
  std::string wrapped;
  std::size_t column = indent;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t word = std::min(text.find_first_not_of(' ', from), text.size());
    const std::size_t end = std::min(text.find(' ', word), text.size());
    const bool fits = column + (end - from) <= kWidth;
    if (!fits && column > indent) {
      wrapped += "\n" + std::string(indent, ' ');
      column = indent;
      from = word;
    }
    wrapped += text.substr(from, end - from);
    column += end - from;
    from = end;
  }
  return wrapped;
}
