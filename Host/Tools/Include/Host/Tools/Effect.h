// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "Host/Tools/Api.h"

class Attribute;
class Node;

/// When an attribute has an effect on what its node makes: a part of the attribute's row. Whoever shows or checks the
/// node goes by it, and the node itself does not.
///
/// A rule tells how the node is built, not which values happen to cancel each other out.
struct Effect {
  enum class Kind : std::uint8_t {
    kAlways,
    /// Never; `reason` says why the attribute is there.
    kNever,
    /// With at least `least_images` and at most `most_images` connected.
    kWithImages,
    /// While the choice `attribute` is one of `words`.
    kWithWords,
    /// While the number `attribute` is greater than `bound`.
    kAbove,
    /// While the string `attribute` is empty.
    kWithoutText,
  };
  static constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

  Kind kind = Kind::kAlways;
  const char* reason = "";
  /// Another attribute of the same node.
  const char* attribute = "";
  /// Comma-separated.
  const char* words = "";
  double bound = 0.0;
  std::size_t least_images = 0;
  std::size_t most_images = kAnyNumber;
};

namespace ScEng {

/// Why an attribute has no effect now, as the rest of a sentence that starts with its name: "has no effect while
/// \"range\" is declared". Empty where it has one, where its row does not say, and where what it depends on is not
/// known: an attribute that a connection feeds, or the number of images (nothing).
HOST_TOOLS_API std::string DescribeNoEffect(const Node& node, const Attribute& attribute,
                                            std::optional<std::size_t> num_images);

}  // namespace ScEng
