// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <compare>
#include <string>

/// The host's identifier of a node type: three unsigned numbers, the same in documents of every version.
class NodeType {
 public:
  constexpr NodeType() = default;
  constexpr NodeType(unsigned first, unsigned second, unsigned third) : numbers_{first, second, third} {}

  [[nodiscard]] constexpr std::array<unsigned, 3> GetNumbers() const { return numbers_; }
  /// "10, 320, 5"
  [[nodiscard]] std::string ToString() const {
    return std::to_string(numbers_[0]) + ", " + std::to_string(numbers_[1]) + ", " + std::to_string(numbers_[2]);
  }
  friend constexpr auto operator<=>(const NodeType&, const NodeType&) = default;

 private:
  std::array<unsigned, 3> numbers_{};
};
