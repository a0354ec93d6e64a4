// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/XmlTags.h"

#include <algorithm>

namespace ScEng {
namespace {

constexpr std::size_t kMostDepth = 200;
constexpr std::size_t kMostBindings = 200;
constexpr std::string_view kSpaces = " \t\r\n";
constexpr std::string_view kNameEnds = " \t\r\n=/<>\"'";

}  // namespace

bool XmlTags::SkipBehind(std::string_view end) {
  const std::size_t found = text_.find(end, at_);
  if (found == std::string_view::npos) return false;
  at_ = found + end.size();
  return true;
}

void XmlTags::SkipSpace() { at_ = std::min(text_.find_first_not_of(kSpaces, at_), text_.size()); }

std::string_view XmlTags::TakeName() {
  const std::size_t end = std::min(text_.find_first_of(kNameEnds, at_), text_.size());
  const std::string_view name = text_.substr(at_, end - at_);
  at_ = end;
  return name;
}

std::optional<XmlTag> XmlTags::Next() {
  for (;;) {
    at_ = std::min(text_.find('<', at_), text_.size());
    if (at_ == text_.size()) {
      is_complete_ = open_.empty();
      return std::nullopt;
    }
    bool is_skipped = true;
    if (StartsWith("<!--")) {
      is_skipped = SkipBehind("-->");
    } else if (StartsWith("<![CDATA[")) {
      is_skipped = SkipBehind("]]>");
    } else if (StartsWith("<?")) {
      is_skipped = SkipBehind("?>");
    } else if (StartsWith("<!")) {
      // Declarations may give words another meaning, and have no place in metadata.
      is_skipped = false;
    } else if (auto tag = TakeTag()) {
      return tag;
    } else {
      is_skipped = false;
    }
    if (is_skipped) continue;
    text_ = {};
    return std::nullopt;
  }
}

bool XmlTags::TakeAttributes(std::vector<RawAttribute>& attributes) {
  for (;;) {
    RawAttribute attribute{};
    attribute.begin = at_;
    SkipSpace();
    if (at_ >= text_.size()) return false;
    if (text_[at_] == '>' || text_[at_] == '/') return true;
    attribute.name = TakeName();
    SkipSpace();
    if (attribute.name.empty() || !StartsWith("=")) return false;
    ++at_;
    SkipSpace();
    if (!StartsWith("\"") && !StartsWith("'")) return false;
    const std::size_t end = text_.find(text_[at_], at_ + 1);
    if (end == std::string_view::npos) return false;
    attribute.value = text_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    attribute.end = at_;
    attributes.push_back(attribute);
  }
}

std::optional<XmlTag> XmlTags::TakeEndTag(std::size_t begin) {
  at_ = begin + 2;
  const std::string_view name = TakeName();
  SkipSpace();
  if (open_.empty() || name != open_.back() || !StartsWith(">")) return std::nullopt;
  ++at_;
  XmlTag tag;
  tag.kind = XmlTag::Kind::kEnd;
  tag.name = Resolve(name, false);
  tag.begin = begin;
  tag.end = at_;
  Unbind();
  tag.depth = open_.size();
  return tag;
}

std::optional<XmlTag> XmlTags::TakeTag() {
  const std::size_t begin = at_;
  if (StartsWith("</")) return TakeEndTag(begin);
  ++at_;
  const std::string_view name = TakeName();
  std::vector<RawAttribute> attributes;
  if (name.empty() || open_.size() == kMostDepth || !TakeAttributes(attributes)) return std::nullopt;
  XmlTag tag;
  if (StartsWith("/")) {
    tag.kind = XmlTag::Kind::kEmpty;
    ++at_;
  }
  if (!StartsWith(">")) return std::nullopt;
  ++at_;
  tag.depth = open_.size();
  tag.begin = begin;
  tag.end = at_;
  open_.push_back(name);
  if (!Bind(attributes)) return std::nullopt;
  tag.name = Resolve(name, false);
  for (const RawAttribute& attribute : attributes) {
    tag.attributes.push_back({Resolve(attribute.name, true), attribute.value, attribute.begin, attribute.end});
  }
  if (tag.kind == XmlTag::Kind::kEmpty) Unbind();
  return tag;
}

bool XmlTags::Bind(const std::vector<RawAttribute>& attributes) {
  constexpr std::string_view kDeclaration = "xmlns:";
  for (const RawAttribute& attribute : attributes) {
    const bool is_default = attribute.name == "xmlns";
    if (!is_default && !attribute.name.starts_with(kDeclaration)) continue;
    if (bindings_.size() == kMostBindings) return false;
    const std::string_view prefix = is_default ? std::string_view() : attribute.name.substr(kDeclaration.size());
    bindings_.push_back({prefix, attribute.value, open_.size()});
  }
  return true;
}

void XmlTags::Unbind() {
  while (!bindings_.empty() && bindings_.back().depth == open_.size()) bindings_.pop_back();
  open_.pop_back();
}

XmlName XmlTags::Resolve(std::string_view name, bool is_attribute) const {
  const std::size_t colon = name.find(':');
  const bool has_prefix = colon != std::string_view::npos;
  // Attributes without a prefix are in no namespace.
  if (!has_prefix && is_attribute) return {{}, name};
  const std::string_view prefix = has_prefix ? name.substr(0, colon) : std::string_view();
  const auto found = std::find_if(bindings_.rbegin(), bindings_.rend(),
                                  [&](const Binding& binding) { return binding.prefix == prefix; });
  return {found == bindings_.rend() ? std::string_view() : found->space, has_prefix ? name.substr(colon + 1) : name};
}

}  // namespace ScEng
