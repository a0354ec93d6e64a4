// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace ScEng {

/// A name of XML in the namespace that its prefix stands for; empty where the prefix stands for none.
struct XmlName {
  std::string_view space;
  std::string_view local;

  bool operator==(const XmlName&) const = default;
};

struct XmlAttribute {
  XmlName name;
  /// As it is written, with its references.
  std::string_view value;
  /// From the white space before it to behind its closing quote.
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct XmlTag {
  enum class Kind { kStart, kEnd, kEmpty };

  Kind kind = Kind::kStart;
  XmlName name;
  std::vector<XmlAttribute> attributes;
  /// How many elements it lies in.
  std::size_t depth = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// The tags of a text of XML from the first to the last. It trusts nothing in the text: at what is no XML, and beyond
/// bounds that no proper text comes near, it ends.
class XmlTags {
 public:
  /// The text must outlive the object and what it answers.
  explicit XmlTags(std::string_view text) : text_(text) {}

  /// Nothing at the end.
  std::optional<XmlTag> Next();
  /// Whether everything was read and every element is closed.
  [[nodiscard]] bool IsComplete() const { return is_complete_; }

 private:
  struct Binding {
    std::string_view prefix;
    std::string_view space;
    std::size_t depth;
  };
  struct RawAttribute {
    std::string_view name;
    std::string_view value;
    std::size_t begin;
    std::size_t end;
  };

  [[nodiscard]] bool StartsWith(std::string_view start) const { return text_.substr(at_).starts_with(start); }
  bool SkipBehind(std::string_view end);
  void SkipSpace();
  std::string_view TakeName();
  bool TakeAttributes(std::vector<RawAttribute>& attributes);
  std::optional<XmlTag> TakeTag();
  std::optional<XmlTag> TakeEndTag(std::size_t begin);
  bool Bind(const std::vector<RawAttribute>& attributes);
  void Unbind();
  [[nodiscard]] XmlName Resolve(std::string_view name, bool is_attribute) const;

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<std::string_view> open_;
  std::vector<Binding> bindings_;
  bool is_complete_ = false;
};

}  // namespace ScEng
