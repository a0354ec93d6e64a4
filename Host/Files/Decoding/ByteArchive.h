// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

// Values as bytes between two processes of one machine: numbers as they lie in memory, everything of variable length
// after its count. The layout is flat, so that reading needs no more stack for one message than for another, and a
// count is believed only as far as there are bytes for it.

namespace ScEng {

using Bytes = std::vector<std::uint8_t>;

/// A structure, constant or not. Its fields are listed once for both directions, by a function template `Fields` with
/// this constraint.
template <class Value, class Structure>
concept Is = std::same_as<std::remove_const_t<Value>, Structure>;

template <class Value>
inline constexpr bool kIsPlain = std::is_arithmetic_v<Value> || std::is_enum_v<Value>;

/// Appends values to bytes.
class ByteWriter {
 public:
  explicit ByteWriter(Bytes& bytes) : bytes_(bytes) {}

  template <class... Values>
  void operator()(const Values&... values) {
    (Put(values), ...);
  }

  void PutRaw(const void* from, std::size_t size) {
    if (size == 0) return;
    const std::size_t begin = bytes_.size();
    bytes_.resize(begin + size);
    std::memcpy(bytes_.data() + begin, from, size);
  }
  void PutCount(std::size_t count) { Put(static_cast<std::uint64_t>(count)); }

 private:
  template <class Value>
  requires kIsPlain<Value>
  void Put(const Value& value) { PutRaw(&value, sizeof value); }
  void Put(const std::string& text) {
    PutCount(text.size());
    PutRaw(text.data(), text.size());
  }
  template <class Value>
  void Put(const std::vector<Value>& values) {
    PutCount(values.size());
    if constexpr (kIsPlain<Value>) {
      PutRaw(values.data(), values.size() * sizeof(Value));
    } else {
      for (const Value& value : values) Put(value);
    }
  }
  template <class Value, std::size_t Count>
  void Put(const std::array<Value, Count>& values) {
    for (const Value& value : values) Put(value);
  }
  template <class Value>
  void Put(const std::optional<Value>& value) {
    Put(value.has_value());
    if (value) Put(*value);
  }
  template <class First, class Second>
  void Put(const std::pair<First, Second>& pair) {
    Put(pair.first);
    Put(pair.second);
  }
  template <class... Choices>
  void Put(const std::variant<Choices...>& value) {
    Put(static_cast<std::uint8_t>(value.index()));
    std::visit([this](const auto& choice) { this->Put(choice); }, value);
  }
  /// A structure whose fields `Fields(archive, structure)` lists.
  template <class Value>
  requires(std::is_class_v<Value>) void Put(const Value& value) { Fields(*this, value); }

  Bytes& bytes_;
};

/// Takes values from bytes of unknown origin. After the first one that is not there or cannot be, everything that is
/// asked for stays as it was and `IsGood` is false.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  template <class... Values>
  void operator()(Values&... values) {
    (Get(values), ...);
  }

  [[nodiscard]] bool IsGood() const { return is_good_; }
  /// Whether all was good and nothing is left.
  [[nodiscard]] bool IsDone() const { return is_good_ && rest_.empty(); }

 private:
  // What a count alone can make this process allocate beyond the size of the message.
  static constexpr std::size_t kMostElements = std::size_t{1} << 20;

  void Take(void* to, std::size_t size) {
    if (size > rest_.size()) is_good_ = false;
    if (!is_good_ || size == 0) return;
    std::memcpy(to, rest_.data(), size);
    rest_ = rest_.subspan(size);
  }
  /// A count of elements of at least `size` bytes each.
  std::size_t TakeCount(std::size_t size) {
    std::uint64_t count = 0;
    Get(count);
    if (count > rest_.size() / size) is_good_ = false;
    return is_good_ ? static_cast<std::size_t>(count) : 0;
  }
  template <class Value>
  requires kIsPlain<Value>
  void Get(Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      // Any other byte is no truth value, and reading one as such has no meaning.
      std::uint8_t byte = 0;
      Take(&byte, 1);
      if (byte > 1) is_good_ = false;
      if (is_good_) value = byte == 1;
    } else {
      Take(&value, sizeof value);
    }
  }
  void Get(std::string& text) {
    text.resize(TakeCount(1));
    Take(text.data(), text.size());
  }
  template <class Value>
  void Get(std::vector<Value>& values) {
    if constexpr (kIsPlain<Value>) {
      values.resize(TakeCount(sizeof(Value)));
      Take(values.data(), values.size() * sizeof(Value));
    } else {
      const std::size_t count = TakeCount(1);
      if (count > kMostElements) is_good_ = false;
      values.clear();
      for (std::size_t i = 0; i < count && is_good_; ++i) Get(values.emplace_back());
    }
  }
  template <class Value, std::size_t Count>
  void Get(std::array<Value, Count>& values) {
    for (Value& value : values) Get(value);
  }
  template <class Value>
  void Get(std::optional<Value>& value) {
    bool is_there = false;
    Get(is_there);
    std::optional<Value> read;
    if (is_there && is_good_) Get(read.emplace());
    value.swap(read);
  }
  template <class First, class Second>
  void Get(std::pair<First, Second>& pair) {
    Get(pair.first);
    Get(pair.second);
  }
  template <class... Choices>
  void Get(std::variant<Choices...>& value) {
    std::uint8_t index = 0;
    Get(index);
    if (index >= sizeof...(Choices)) is_good_ = false;
    if (is_good_) GetChoice(value, index, std::index_sequence_for<Choices...>());
  }
  template <class Variant, std::size_t... Indices>
  void GetChoice(Variant& value, std::size_t index, std::index_sequence<Indices...> /*all*/) {
    (static_cast<void>(Indices == index ? (Get(value.template emplace<Indices>()), 0) : 0), ...);
  }
  template <class Value>
  requires(std::is_class_v<Value>) void Get(Value& value) { Fields(*this, value); }

  std::span<const std::uint8_t> rest_;
  bool is_good_ = true;
};

}  // namespace ScEng
