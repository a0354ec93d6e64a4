// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Effect.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Node.h"

namespace ScEng {
namespace {

std::string While(const Attribute& other, const std::string& value) {
  return "has no effect while \"" + other.GetName() + "\" is " + value;
}

bool HasWord(std::string_view words, std::string_view word) {
  for (std::size_t from = 0; from <= words.size();) {
    const std::size_t end = std::min(words.find(',', from), words.size());
    if (words.substr(from, end - from) == word) return true;
    from = end + 1;
  }
  return false;
}

std::string FormatNumber(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), number).ptr};
}

std::string DescribeImages(const Effect& effect, std::size_t images) {
  // A node without images makes nothing, whatever it is set to.
  if (images == 0) return {};
  if (images >= effect.least_images && images <= effect.most_images) return {};
  const bool has_too_few = images < effect.least_images;
  const std::size_t wanted = has_too_few ? effect.least_images : effect.most_images;
  return "has no effect with " + std::to_string(images) + (images == 1 ? " image" : " images") + "; it counts with " +
         (wanted == 1 ? std::string("one") : std::to_string(wanted)) + (has_too_few ? " or more" : "");
}

/// What the value of another attribute has to say.
std::string DescribeOther(const Effect& effect, const Attribute& other) {
  switch (effect.kind) {
    case Effect::Kind::kWithWords: {
      const std::string word = other.GetValue().GetText();
      return HasWord(effect.words, word) ? std::string() : While(other, word);
    }
    case Effect::Kind::kAbove: {
      const double number = other.GetValue().GetNumber();
      return number > effect.bound ? std::string() : While(other, FormatNumber(number));
    }
    default: return other.GetValue().GetText().empty() ? std::string() : While(other, "given");
  }
}

}  // namespace

std::string DescribeNoEffect(const Node& node, const Attribute& attribute, std::optional<std::size_t> num_images) {
  if (attribute.GetRow() == nullptr) return {};
  const Effect& effect = attribute.GetRow()->effect;
  switch (effect.kind) {
    case Effect::Kind::kAlways: return {};
    case Effect::Kind::kNever: return std::string("has no effect: ") + effect.reason;
    case Effect::Kind::kWithImages: return num_images ? DescribeImages(effect, *num_images) : std::string();
    default: break;
  }
  const Attribute* other = node.GetAttribute(std::string(effect.attribute));
  if (other == nullptr || !node.GetAttributeSource(other->GetId()).empty()) return {};
  return DescribeOther(effect, *other);
}

}  // namespace ScEng
