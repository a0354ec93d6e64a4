// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/MetadataText.h"

#include <charconv>
#include <iterator>

namespace ScEng {
namespace {

template <class Number>
std::string JoinNumbers(const std::vector<Number>& numbers) {
  std::string text;
  for (const Number number : numbers) {
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    text += text.empty() ? "" : ", ";
    text.append(std::begin(digits), end);
  }
  return text;
}

}  // namespace

std::optional<std::string> ToText(const MetadataValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* numbers = std::get_if<std::vector<std::int64_t>>(&value)) return JoinNumbers(*numbers);
  if (const auto* numbers = std::get_if<std::vector<double>>(&value)) return JoinNumbers(*numbers);
  return std::nullopt;
}

}  // namespace ScEng
