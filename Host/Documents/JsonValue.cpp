// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/JsonValue.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

constexpr std::size_t kColumns = 120;

/// Appends to a text until it is long enough.
class LineFormatter {
 public:
  explicit LineFormatter(std::size_t most) : most_(most) {}

  void Append(const JsonValue& value) {
    if (IsFull()) return;
    if (const bool* flag = value.GetFlag()) {
      text_ += *flag ? "true" : "false";
    } else if (const double* number = value.GetNumber()) {
      text_ += FormatJsonNumber(*number);
    } else if (const std::string* text = value.GetText()) {
      AppendText(*text);
    } else if (const JsonValue::Array* array = value.GetArray()) {
      text_ += '[';
      for (const JsonValue& entry : *array) {
        if (IsFull()) return;
        if (&entry != array->data()) text_ += ", ";
        Append(entry);
      }
      text_ += ']';
    } else if (const JsonValue::Object* object = value.GetObject()) {
      text_ += '{';
      for (const JsonMember& member : *object) {
        if (IsFull()) return;
        if (&member != object->data()) text_ += ", ";
        AppendText(member.key);
        text_ += ": ";
        Append(member.value);
      }
      text_ += '}';
    } else {
      text_ += "null";
    }
  }

  void AppendText(std::string_view text) {
    text_ += '"';
    for (const char letter : text) {
      if (IsFull()) return;
      switch (letter) {
        case '"': text_ += "\\\""; break;
        case '\\': text_ += "\\\\"; break;
        case '\n': text_ += "\\n"; break;
        case '\r': text_ += "\\r"; break;
        case '\t': text_ += "\\t"; break;
        default: AppendLetter(letter); break;
      }
    }
    text_ += '"';
  }

  std::string Take() { return std::move(text_); }

 private:
  void AppendLetter(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte >= 0x20 && byte != 0x7F) {
      text_ += letter;
      return;
    }
    constexpr const char* kDigits = "0123456789abcdef";
    text_ += "\\u00";
    text_ += kDigits[byte >> 4];
    text_ += kDigits[byte & 0xF];
  }

  // A character has at most four bytes.
  [[nodiscard]] bool IsFull() const { return text_.size() / 4 > most_; }

  std::size_t most_;
  std::string text_;
};

}  // namespace

JsonValue JsonValue::Numbers(const std::vector<double>& numbers) {
  Array array;
  array.reserve(numbers.size());
  for (const double number : numbers) array.emplace_back(number);
  return JsonValue(std::move(array));
}

const JsonValue* JsonValue::Find(std::string_view key) const {
  const Object* object = GetObject();
  if (object == nullptr) return nullptr;
  for (const JsonMember& member : *object) {
    if (member.key == key) return &member.value;
  }
  return nullptr;
}

void JsonValue::Add(std::string_view key, JsonValue value) {
  GetObject()->push_back({std::string(key), std::move(value)});
}

std::string FormatJsonNumber(double number) {
  // A zero without a fraction loses its sign where JSON reads it as a whole number.
  if (number == 0.0) return std::signbit(number) ? "-0.0" : "0";
  char buffer[64];
  const auto to_text = [&](std::chars_format format) {
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof(buffer), number, format).ptr);
  };
  // Plain digits for what people write in plain digits.
  constexpr double kSmallest = 1e-6;
  constexpr double kLargest = 1e21;
  const double size = std::abs(number);
  if (size >= kSmallest && size < kLargest) return to_text(std::chars_format::fixed);
  const std::string text = to_text(std::chars_format::scientific);
  // The exponent without its plus and leading zeros: "1e+21" and "2e-07" are "1e21" and "2e-7".
  const std::size_t exponent = text.find('e') + 1;
  const bool is_negative = text[exponent] == '-';
  const std::size_t digits = text.find_first_not_of("+-0", exponent);
  return text.substr(0, exponent) + (is_negative ? "-" : "") + text.substr(digits);
}

std::string FormatJsonLine(const JsonValue& value, std::size_t most) {
  LineFormatter formatter(most);
  formatter.Append(value);
  return formatter.Take();
}

void AppendJson(const JsonValue& value, std::size_t indent, std::size_t used, std::size_t after, std::string& text) {
  const std::size_t taken = used + after;
  const std::size_t free = taken < kColumns ? kColumns - taken : 0;
  const JsonValue::Array* array = value.GetArray();
  const JsonValue::Object* object = value.GetObject();
  const std::size_t entries = array != nullptr ? array->size() : object != nullptr ? object->size() : 0;
  if (entries == 0) {
    // Nothing that could go on another line.
    text += FormatJsonLine(value, std::numeric_limits<std::size_t>::max());
    return;
  }
  const std::string line = FormatJsonLine(value, free);
  if (CountCodePoints(line) <= free) {
    text += line;
    return;
  }
  const std::size_t deeper = indent + 2;
  text += array != nullptr ? "[\n" : "{\n";
  for (std::size_t i = 0; i < entries; ++i) {
    const bool is_last = i + 1 == entries;
    const std::string key = array != nullptr ? "" : FormatJsonLine(JsonValue((*object)[i].key), SIZE_MAX) + ": ";
    text.append(deeper, ' ');
    text += key;
    AppendJson(array != nullptr ? (*array)[i] : (*object)[i].value, deeper, deeper + CountCodePoints(key),
               is_last ? 0 : 1, text);
    text += is_last ? "\n" : ",\n";
  }
  text.append(indent, ' ');
  text += array != nullptr ? "]" : "}";
}

}  // namespace ScEng
