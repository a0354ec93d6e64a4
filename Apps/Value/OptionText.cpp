// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/OptionText.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <vector>

#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/UsageText.h"

namespace {

bool IsPartOfWord(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0; }

/// Whether a text holds a word or a number as a whole: "16" does not hold "1".
bool HoldsWord(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if ((at == 0 || !IsPartOfWord(text[at - 1])) && (end == text.size() || !IsPartOfWord(text[end]))) return true;
  }
  return false;
}

/// The bounds of a number, as its check has them: "1 - 1024" for example; empty where it has none.
std::string FindBounds(const CLI::Option& option) {
  const std::string name = option.get_type_name();
  const std::size_t start = name.find(" in [");
  const std::size_t end = name.rfind(']');
  if (start == std::string::npos || end == std::string::npos || end < start) return {};
  return name.substr(start + 5, end - start - 5);
}

/// "From 1 to 1024."; empty where the text names both, or there are none.
std::string DescribeBounds(const CLI::Option& option, const std::string& text) {
  constexpr std::string_view kTo = " - ";
  const std::string bounds = FindBounds(option);
  const std::size_t to = bounds.find(kTo);
  if (to == std::string::npos) return {};
  const std::string low = bounds.substr(0, to);
  const std::string high = bounds.substr(to + kTo.size());
  return HoldsWord(text, low) && HoldsWord(text, high) ? "" : " From " + low + " to " + high + ".";
}

}  // namespace

std::string EndSentence(std::string text) {
  if (!text.empty() && std::string_view(".!?:").find(text.back()) == std::string_view::npos) text += '.';
  return text;
}

std::string DescribeOption(const CLI::Option& option) {
  std::string text = EndSentence(option.get_description());
  const std::vector<std::string> words = GetWords(option);
  const bool names_words =
      std::all_of(words.begin(), words.end(), [&](const std::string& word) { return HoldsWord(text, word); });
  if (!names_words) text += " One of " + JoinWithLast(words, " or ") + ".";
  text += DescribeBounds(option, text);
  if (option.nonpositional() && MayRepeat(option) && text.find("again") == std::string::npos) {
    text += " May be given again.";
  }
  if (option.nonpositional() && option.get_required()) text += " Required.";
  return text;
}
