// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ScEng {

struct JsonMember;

/// A JSON value. Objects keep the order of their members; numbers are doubles. Depth is the caller's to bound: copying,
/// printing and destruction recurse into what is nested.
class JsonValue {
 public:
  using Array = std::vector<JsonValue>;
  using Object = std::vector<JsonMember>;

  JsonValue() = default;
  // Defined where the members of objects are complete.
  explicit inline JsonValue(bool flag);
  explicit inline JsonValue(double number);
  explicit inline JsonValue(std::string text);
  explicit inline JsonValue(std::string_view text);
  explicit inline JsonValue(const char* text);
  explicit inline JsonValue(Array array);
  explicit inline JsonValue(Object object);
  /// A list of numbers.
  static JsonValue Numbers(const std::vector<double>& numbers);

  /// What is held where it is of the kind that is asked for, else null.
  [[nodiscard]] const bool* GetFlag() const { return std::get_if<bool>(&value_); }
  [[nodiscard]] const double* GetNumber() const { return std::get_if<double>(&value_); }
  [[nodiscard]] const std::string* GetText() const { return std::get_if<std::string>(&value_); }
  [[nodiscard]] const Array* GetArray() const { return std::get_if<Array>(&value_); }
  [[nodiscard]] const Object* GetObject() const { return std::get_if<Object>(&value_); }
  [[nodiscard]] Array* GetArray() { return std::get_if<Array>(&value_); }
  [[nodiscard]] Object* GetObject() { return std::get_if<Object>(&value_); }

  /// The member of an object; null where there is none, and in any other value.
  [[nodiscard]] const JsonValue* Find(std::string_view key) const;
  /// Adds a member to an object, which must not have it yet.
  void Add(std::string_view key, JsonValue value);

 private:
  std::variant<std::monostate, bool, double, std::string, Array, Object> value_;
};

struct JsonMember {
  std::string key;
  JsonValue value;
};

inline JsonValue::JsonValue(bool flag) : value_(flag) {}
inline JsonValue::JsonValue(double number) : value_(number) {}
inline JsonValue::JsonValue(std::string text) : value_(std::move(text)) {}
inline JsonValue::JsonValue(std::string_view text) : value_(std::string(text)) {}
inline JsonValue::JsonValue(const char* text) : value_(std::string(text)) {}
inline JsonValue::JsonValue(Array array) : value_(std::move(array)) {}
inline JsonValue::JsonValue(Object object) : value_(std::move(object)) {}

/// A number as JSON in its shortest form that reads back the same; it must be finite.
std::string FormatJsonNumber(double number);

/// A value on one line, as far as it has at most `most` characters; what is longer is cut somewhere beyond them.
std::string FormatJsonLine(const JsonValue& value, std::size_t most);

/// A value on one line where it fits in 120 columns, else with one member or entry a line, two spaces deeper, where the
/// same holds for each of them. `indent` is that of the line it starts on, of which `used` columns are taken; `after`
/// columns follow it.
void AppendJson(const JsonValue& value, std::size_t indent, std::size_t used, std::size_t after, std::string& text);

}  // namespace ScEng
