// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Host/Nodes/Api.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"

namespace ScEng {

/// The texts by which a node type is found, the most telling first.
struct SearchTexts {
  /// Display name and class name.
  std::string name;
  std::string keywords;
  std::string sentence;
  /// Attributes with their sentences and choices.
  std::string attributes;
};

HOST_NODES_API SearchTexts MakeSearchTexts(const NodeInterface& descriptor, const Node& node);
/// Of all node types, in the order of the catalogue; of one that cannot be made, the names alone.
HOST_NODES_API std::vector<SearchTexts> MakeSearchTexts(const NodeCatalog& catalog);

/// The places of the texts that hold all of the words, the best first: what is found in a name comes before what is
/// found in keywords (an earlier one before a later one), then sentences, then attributes. Case does not count, and
/// British and American spellings are one.
///
/// A word is looked for at the beginnings of words; only where that finds nothing, anywhere.
HOST_NODES_API std::vector<std::size_t> Search(const std::vector<SearchTexts>& texts,
                                               const std::vector<std::string>& words);

/// The words of a text in small letters and one spelling: "Value Add", "color_mode" and "ImageValueAddNode" have two
/// and more.
HOST_NODES_API std::vector<std::string> SplitSearchWords(const std::string& text);
/// The same of what a person looks for: sorted, each once.
HOST_NODES_API std::vector<std::string> SplitSearchQuery(const std::vector<std::string>& words);

}  // namespace ScEng
