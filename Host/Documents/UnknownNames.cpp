// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/MessageText.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/ClosestName.h"

namespace ScEng {
namespace {

// Longer texts are not misspelt names.
constexpr std::size_t kLongestMisspelt = 40;
// How many names a message lists, where none is close.
constexpr std::size_t kMostListed = 8;
// In larger documents only ids are looked through.
constexpr std::size_t kMostSearched = 1000;

std::vector<std::string> QuoteEach(std::vector<std::string> names) {
  for (std::string& name : names) name = Quote(name);
  return names;
}

std::string OfferNames(const std::vector<std::string>& names) {
  if (names.empty()) return {};
  return (names.size() == 1 ? "; the closest is " : "; the closest are ") + JoinNames(QuoteEach(names));
}

std::vector<std::string> ListNames(const Node& node, NameUse use) {
  std::vector<std::string> names;
  for (const PlugRecord& plug : node.GetOutplugs()) {
    if (use != NameUse::kAttribute && plug.type == PlugType::kImage) names.push_back(plug.name);
  }
  for (std::size_t i = 0; use != NameUse::kOutput && i < node.GetNumAttributes(); ++i) {
    names.push_back(node.GetAttribute(i)->GetName());
  }
  return names;
}

bool IsImageInput(const Node& node, const std::string& name) {
  const int plug = node.GetInplugIndex(name);
  return plug >= 0 && static_cast<std::size_t>(plug) < node.GetNumRegularInputs();
}

}  // namespace

std::string GraphDocument::Content::SuggestName(const std::string& word, const std::vector<std::string>& names) const {
  if (word.size() > kLongestMisspelt || comparisons_left < names.size()) return {};
  comparisons_left -= names.size();
  return OfferNames(FindClosestNames(word, names));
}

std::string GraphDocument::Content::SuggestNode(const std::string& id) const {
  const std::string closest = SuggestName(id, ids);
  if (!closest.empty() || id.size() > kLongestMisspelt || ids.size() > kMostSearched) return closest;
  if (comparisons_left < ids.size()) return {};
  comparisons_left -= ids.size();
  // A type's name in place of an id says which nodes are meant.
  std::vector<std::string> meant;
  if (const NodeInterface* type = engine.GetCatalog().FindWritten(id)) {
    for (const std::string& other : ids) {
      const Node* node = entries.at(other).node;
      if (node != nullptr && node->GetNodeType() == type->GetNodeType()) meant.push_back(other);
    }
  }
  if (!meant.empty() && meant.size() <= kMostListed) return OfferNames(meant);
  return ids.empty() || ids.size() > kMostListed ? std::string() : "; there are " + JoinNames(QuoteEach(ids));
}

std::string GraphDocument::Content::SuggestPlug(const std::string& word, NameUse use) const {
  if (word.size() > kLongestMisspelt || ids.size() > kMostSearched || comparisons_left < ids.size()) return {};
  comparisons_left -= ids.size();
  constexpr std::size_t kMostOffered = 3;
  std::vector<std::string> offered;
  if (const auto found = entries.find(word); found != entries.end() && found->second.node != nullptr) {
    for (const std::string& name : ListNames(*found->second.node, use)) offered.push_back(word + "." + name);
    offered.resize(std::min(offered.size(), kMostOffered));
    return OfferNames(offered);
  }
  for (const std::string& id : ids) {
    const Node* node = entries.at(id).node;
    if (node == nullptr || offered.size() == kMostOffered) continue;
    for (const std::string& name : FindClosestNames(word, ListNames(*node, use), 1)) offered.push_back(id + "." + name);
  }
  return offered.empty() ? SuggestName(word, ids) : OfferNames(offered);
}

std::string GraphDocument::Content::DescribeMissingPlug(const Node& node, const char* what, const std::string& name,
                                                        const std::vector<std::string>& names) const {
  return node.GetName() + " has no " + what + " " + Quote(name) + SuggestName(name, names) +
         (names.empty() ? "" : "; it has " + JoinNames(names));
}

std::string GraphDocument::Content::DescribeMissingAttribute(const Node& node, const std::string& name) const {
  std::string text = DescribeMissingPlug(node, "attribute", name, ListNames(node, NameUse::kAttribute));
  if (IsImageInput(node, name)) text += "; " + Quote(name) + " is an input, which takes an image";
  return text;
}

std::string GraphDocument::Content::SuggestReader() const {
  std::vector<std::string> readers;
  for (std::size_t i = 0; i < ids.size() && readers.size() <= kMostListed; ++i) {
    const Node* node = entries.at(ids[i]).node;
    if (node != nullptr && FindPathAttribute(*node, Attribute::StringUse::kReadPath) != nullptr) {
      readers.push_back(ids[i]);
    }
  }
  if (readers.empty()) return "; the document has no reader";
  if (readers.size() > kMostListed) return {};
  return (readers.size() == 1 ? "; the reader is " : "; the readers are ") + JoinNames(QuoteEach(readers));
}

}  // namespace ScEng
