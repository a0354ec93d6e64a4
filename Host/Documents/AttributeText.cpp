// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/AttributeText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

#include "Host/Documents/Findings.h"
#include "Host/Documents/MessageText.h"
#include "Host/Util/ClosestName.h"

namespace ScEng {
namespace {

Status SetNumber(Attribute& attribute, double number, std::vector<std::string>& notes) {
  if (!attribute.SetNumber(number, false)) return Status::Error("it takes a number, not NaN");
  const double taken = attribute.GetValue().GetNumber();
  if (taken != number)
    notes.push_back(FormatJsonNumber(number) + " is out of bounds and clamped to " + FormatJsonNumber(taken));
  return {};
}

Status SetChoice(Attribute& attribute, const std::string& word) {
  if (attribute.SetChoice(word, false)) return {};
  return Status::Error(Quote(word) + " is not one of its words: " + JoinNames(attribute.GetChoices()) +
                       SuggestClosestNames(word, attribute.GetChoices()));
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

/// A value for a message: as much of it as is shown, and no more.
std::string Describe(const JsonValue& value) {
  constexpr std::size_t kLongest = 40;
  return MakeLine(FormatJsonLine(value, kLongest), kLongest);
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

/// "true" for "yes" and the like; nothing for what means neither.
std::optional<std::string> ReadFlagWord(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const char* word : {"true", "yes", "on", "1"}) {
    if (text == word) return "true";
  }
  for (const char* word : {"false", "no", "off", "0"}) {
    if (text == word) return "false";
  }
  return std::nullopt;
}

/// "; write 0.5" for a number with a decimal comma or a unit behind it, "; write 3,4" for numbers between which
/// something else than a comma stands, "; write true" for another word for it; empty where no value can be made out.
std::string OfferValue(const Attribute& attribute, std::string text) {
  constexpr std::size_t kLongest = 80;
  if (text.size() > kLongest) return {};
  if (attribute.GetKind() == Attribute::Kind::kFlag) {
    const auto word = ReadFlagWord(text);
    return word ? "; write " + *word : "";
  }
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    const std::size_t end = text.find_last_of("0123456789");
    // What "%" is of, and whether "1,000" is a thousand, nobody can tell.
    const std::size_t comma = text.find(',');
    if (end == std::string::npos || text.find('%') != std::string::npos || end == comma + 3) return {};
    text.erase(end + 1);
    if (comma != std::string::npos) text[comma] = '.';
    return ParseNumber(text) ? "; write " + text : "";
  }
  std::string joined;
  for (const char letter : text) {
    const bool separates = letter == ' ' || letter == ';' || letter == 'x' || letter == ':' || letter == ',';
    if (!separates) joined += letter;
    if (separates && !joined.empty() && joined.back() != ',') joined += ',';
  }
  if (joined.starts_with("[") || joined.starts_with("(")) joined = joined.substr(1, joined.size() - 2);
  const auto numbers = ParseNumbers(joined);
  return numbers && numbers->size() == GetNumbersForm(attribute.GetKind()).count ? "; write " + joined : "";
}

/// The error for a value of the command line.
Status MakeTextError(const Attribute& attribute, const std::string& text) {
  return Status::Error(MakeKindError(attribute, Quote(text)).GetMessage() + OfferValue(attribute, text));
}

}  // namespace

Status SetAttributeFromJson(Attribute& attribute, const JsonValue& value, std::vector<std::string>& notes) {
  const std::string* text = value.GetText();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      if (value.GetFlag() == nullptr) return MakeKindError(attribute, Describe(value));
      attribute.SetFlag(*value.GetFlag(), false);
      return {};
    case Attribute::Kind::kNumber:
      if (value.GetNumber() == nullptr) return MakeKindError(attribute, Describe(value));
      return SetNumber(attribute, *value.GetNumber(), notes);
    case Attribute::Kind::kChoice:
      return text != nullptr ? SetChoice(attribute, *text) : MakeKindError(attribute, Describe(value));
    case Attribute::Kind::kString:
      if (text == nullptr) return MakeKindError(attribute, Describe(value));
      if (attribute.GetStringUse() != Attribute::StringUse::kText && text->find('\0') != std::string::npos) {
        return Status::Error("a path cannot hold the character 0");
      }
      attribute.SetString(*text, false);
      return {};
    default: break;
  }
  const auto numbers = ReadNumbers(value);
  return numbers ? SetNumbers(attribute, *numbers) : MakeKindError(attribute, Describe(value));
}

Status SetAttributeFromValue(Attribute& attribute, const PlugValue& value, std::vector<std::string>& notes) {
  if (value.GetType() != attribute.GetPlugType()) {
    return MakeKindError(attribute, std::string("a ") + PlugType::GetName(value.GetType()));
  }
  const auto set_finite = [&](const std::vector<double>& numbers) {
    if (std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); })) {
      return SetNumbers(attribute, numbers);
    }
    return Status::Error("it is NaN or infinite, which a document cannot hold");
  };
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: attribute.SetFlag(value.GetFlag(), false); return {};
    case Attribute::Kind::kNumber:
      if (!std::isfinite(value.GetNumber())) {
        return Status::Error("it takes a finite number, which NaN and infinities are not");
      }
      return SetNumber(attribute, value.GetNumber(), notes);
    case Attribute::Kind::kChoice: return SetChoice(attribute, value.GetText());
    case Attribute::Kind::kString:
      if (!IsUtf8(value.GetText())) return Status::Error("its text is not UTF-8, which a document cannot hold");
      return SetAttributeFromJson(attribute, JsonValue(value.GetText()), notes);
    case Attribute::Kind::kPoint: return set_finite({value.GetPoint().x, value.GetPoint().y});
    case Attribute::Kind::kFrame: {
      const Frame frame = value.GetFrame();
      return set_finite({frame.x, frame.y, frame.width, frame.height});
    }
    case Attribute::Kind::kColor: break;
  }
  const Rgbo color = value.GetColor();
  return set_finite({color.red, color.green, color.blue, color.opacity});
}

Status GetAttributeAsJson(const Attribute& attribute, JsonValue& value) {
  const PlugValue& held = attribute.GetValue();
  std::vector<double> numbers;
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: value = JsonValue(held.GetFlag()); return {};
    case Attribute::Kind::kChoice:
    case Attribute::Kind::kString:
      value = JsonValue(held.GetText());
      return IsUtf8(*value.GetText()) ? Status() : Status::Error("its text is not UTF-8, which a document cannot hold");
    case Attribute::Kind::kNumber: numbers = {held.GetNumber()}; break;
    case Attribute::Kind::kPoint: numbers = {held.GetPoint().x, held.GetPoint().y}; break;
    case Attribute::Kind::kFrame: {
      const Frame frame = held.GetFrame();
      numbers = {frame.x, frame.y, frame.width, frame.height};
      break;
    }
    case Attribute::Kind::kColor: {
      const Rgbo color = held.GetColor();
      numbers = {color.red, color.green, color.blue, color.opacity};
      break;
    }
  }
  if (!std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); })) {
    return Status::Error("it is NaN or infinite, which a document cannot hold");
  }
  value = attribute.GetKind() == Attribute::Kind::kNumber ? JsonValue(numbers[0]) : JsonValue::Numbers(numbers);
  return {};
}

std::optional<std::vector<double>> ReadNumbers(const JsonValue& value) {
  const JsonValue::Array* array = value.GetArray();
  if (array == nullptr) return std::nullopt;
  std::vector<double> numbers;
  numbers.reserve(array->size());
  for (const JsonValue& entry : *array) {
    if (entry.GetNumber() == nullptr) return std::nullopt;
    numbers.push_back(*entry.GetNumber());
  }
  return numbers;
}

Status SetAttributeFromText(Attribute& attribute, const std::string& text, std::vector<std::string>& notes) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      if (text != "true" && text != "false") return MakeTextError(attribute, text);
      attribute.SetFlag(text == "true", false);
      return {};
    case Attribute::Kind::kNumber: {
      const auto number = ParseNumber(text);
      return number ? SetNumber(attribute, *number, notes) : MakeTextError(attribute, text);
    }
    case Attribute::Kind::kChoice: return SetChoice(attribute, text);
    case Attribute::Kind::kString: attribute.SetString(text, false); return {};
    default: break;
  }
  const auto numbers = ParseNumbers(text);
  return numbers ? SetNumbers(attribute, *numbers) : MakeTextError(attribute, text);
}

}  // namespace ScEng
