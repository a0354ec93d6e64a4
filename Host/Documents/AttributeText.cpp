// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/AttributeText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>

namespace ScEng {
namespace {

using nlohmann::json;

std::string FormatNumber(double number) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof(text), number).ptr;
  return std::string(text, end);
}

Status SetNumber(Attribute& attribute, double number, std::vector<std::string>& notes) {
  if (!attribute.SetNumber(number, false)) return Status::Error("it takes a number, not NaN");
  const double taken = attribute.GetValue().GetNumber();
  if (taken != number)
    notes.push_back(FormatNumber(number) + " is out of bounds and clamped to " + FormatNumber(taken));
  return {};
}

Status SetChoice(Attribute& attribute, const std::string& word) {
  if (attribute.SetChoice(word, false)) return {};
  return Status::Error("\"" + word + "\" is not one of its words: " + JoinNames(attribute.GetChoices()));
}

/// How many numbers a point, frame or colour has, and what they are.
struct NumbersForm {
  std::size_t count = 0;
  const char* names = "";
};

NumbersForm GetNumbersForm(Attribute::Kind kind) {
  switch (kind) {
    case Attribute::Kind::kPoint: return {2, "x, y"};
    case Attribute::Kind::kFrame: return {4, "x, y, width, height"};
    case Attribute::Kind::kColor: return {4, "red, green, blue, opacity"};
    default: return {};
  }
}

Status SetNumbers(Attribute& attribute, const std::vector<double>& numbers) {
  const NumbersForm form = GetNumbersForm(attribute.GetKind());
  if (numbers.size() != form.count) {
    return Status::Error("it takes " + std::to_string(form.count) + " numbers (" + form.names + "), not " +
                         std::to_string(numbers.size()));
  }
  switch (attribute.GetKind()) {
    case Attribute::Kind::kPoint: attribute.SetPoint(numbers[0], numbers[1], false); break;
    case Attribute::Kind::kFrame: attribute.SetFrame(numbers[0], numbers[1], numbers[2], numbers[3], false); break;
    default: attribute.SetRgbo(numbers[0], numbers[1], numbers[2], numbers[3], false); break;
  }
  return {};
}

Status MakeKindError(const Attribute& attribute, const std::string& given) {
  const NumbersForm form = GetNumbersForm(attribute.GetKind());
  std::string wanted = attribute.GetKindName();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: wanted = "true or false"; break;
    case Attribute::Kind::kNumber: wanted = "a number"; break;
    case Attribute::Kind::kChoice: wanted = "one of the words " + JoinNames(attribute.GetChoices()); break;
    case Attribute::Kind::kString: wanted = "a string"; break;
    default: wanted = std::to_string(form.count) + " numbers (" + form.names + ")"; break;
  }
  return Status::Error("it takes " + wanted + ", not " + given);
}

std::string Describe(const json& value) {
  std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
  constexpr std::size_t kLongest = 40;
  if (text.size() > kLongest) text = text.substr(0, kLongest) + "...";
  return text;
}

/// A whole text that is a number; "inf" and "nan" are none.
std::optional<double> ParseNumber(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  // A number too small for a double counts as the nearest, like in a document.
  if (error == std::errc::result_out_of_range) number = std::strtod(std::string(text).c_str(), nullptr);
  if ((error != std::errc() && error != std::errc::result_out_of_range) || end != text.data() + text.size() ||
      !std::isfinite(number))
    return std::nullopt;
  return number;
}

std::optional<std::vector<double>> ParseNumbers(const std::string& text) {
  std::vector<double> numbers;
  std::size_t from = 0;
  while (from <= text.size()) {
    const std::size_t comma = std::min(text.find(',', from), text.size());
    const auto number = ParseNumber(std::string_view(text).substr(from, comma - from));
    if (!number) return std::nullopt;
    numbers.push_back(*number);
    from = comma + 1;
  }
  return numbers;
}

}  // namespace

std::string JoinNames(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

Status SetAttributeFromJson(Attribute& attribute, const json& value, std::vector<std::string>& notes) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      if (!value.is_boolean()) return MakeKindError(attribute, Describe(value));
      attribute.SetFlag(value.get<bool>(), false);
      return {};
    case Attribute::Kind::kNumber:
      if (!value.is_number()) return MakeKindError(attribute, Describe(value));
      return SetNumber(attribute, value.get<double>(), notes);
    case Attribute::Kind::kChoice:
      if (!value.is_string()) return MakeKindError(attribute, Describe(value));
      return SetChoice(attribute, value.get<std::string>());
    case Attribute::Kind::kString:
      if (!value.is_string()) return MakeKindError(attribute, Describe(value));
      attribute.SetString(value.get<std::string>(), false);
      return {};
    default: break;
  }
  std::vector<double> numbers;
  if (!value.is_array()) return MakeKindError(attribute, Describe(value));
  for (const json& number : value) {
    if (!number.is_number()) return MakeKindError(attribute, Describe(value));
    numbers.push_back(number.get<double>());
  }
  return SetNumbers(attribute, numbers);
}

Status SetAttributeFromText(Attribute& attribute, const std::string& text, std::vector<std::string>& notes) {
  const std::string quoted = "\"" + text + "\"";
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      if (text != "true" && text != "false") return MakeKindError(attribute, quoted);
      attribute.SetFlag(text == "true", false);
      return {};
    case Attribute::Kind::kNumber: {
      const auto number = ParseNumber(text);
      return number ? SetNumber(attribute, *number, notes) : MakeKindError(attribute, quoted);
    }
    case Attribute::Kind::kChoice: return SetChoice(attribute, text);
    case Attribute::Kind::kString: attribute.SetString(text, false); return {};
    default: break;
  }
  const auto numbers = ParseNumbers(text);
  return numbers ? SetNumbers(attribute, *numbers) : MakeKindError(attribute, quoted);
}

}  // namespace ScEng
