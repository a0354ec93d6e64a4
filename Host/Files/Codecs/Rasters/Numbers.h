// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ScEng {

/// The shortest decimal text that reads back as the same number.
template <class Number>
std::string FormatNumber(Number number) {
  char text[64];
  const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
  return {text, end};
}

inline std::string_view Trim(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

template <class Number>
std::optional<Number> Parse(std::string_view text) {
  text = Trim(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// Two numbers with a comma between them.
template <class Number>
std::optional<std::pair<Number, Number>> ParsePair(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto first = Parse<Number>(text.substr(0, comma));
  const auto second = Parse<Number>(text.substr(comma + 1));
  if (!first || !second) return std::nullopt;
  return std::pair(*first, *second);
}

}  // namespace ScEng
