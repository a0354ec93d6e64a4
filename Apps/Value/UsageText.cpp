// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/UsageText.h"

#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

#include "Apps/Value/Arguments.h"
#include "Apps/Value/DeclaredOptions.h"

namespace {

bool IsPlain(char letter) {
  constexpr std::string_view kPlain = "-_./,:=+@%^";
  return std::isalnum(static_cast<unsigned char>(letter)) != 0 || kPlain.find(letter) != std::string_view::npos;
}

}  // namespace

std::string ShowWord(const std::string& word) {
  constexpr std::size_t kLongest = 80;
  if (word.size() <= kLongest) return "\"" + word + "\"";
  // A character of several bytes is not cut in two.
  std::size_t end = kLongest - 3;
  while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xC0) == 0x80) --end;
  return "\"" + word.substr(0, end) + "...\"";
}

std::string QuoteForShell(const std::string& word) {
  bool is_plain = !word.empty();
  for (const char letter : word) is_plain = is_plain && (IsPlain(letter) || (letter & 0x80) != 0);
  if (is_plain) return word;
  std::string quoted = "'";
  for (const char letter : word) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  return quoted + "'";
}

std::string RemoveName(const std::string& message, const std::string& name) {
  const std::string start = "\"" + name + "\": ";
  return message.starts_with(start) ? message.substr(start.size()) : message;
}

std::string ShowOption(const CLI::Option& option) {
  const std::string name = GetNames(option).front();
  return IsFlag(option) ? name : name + " " + GetTypeName(option);
}

std::vector<std::string> QuoteEach(std::vector<std::string> words) {
  for (std::string& word : words) word = "\"" + word + "\"";
  return words;
}

std::string JoinWithLast(const std::vector<std::string>& words, const std::string& last) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? last : ", ";
    text += words[i];
  }
  return text;
}
