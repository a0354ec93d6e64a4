// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"

/// The texts by which a node type is found, the most telling first.
struct SearchTexts {
  /// Display name and class name.
  std::string name;
  std::string keywords;
  std::string sentence;
  /// Attributes with their sentences and choices.
  std::string attributes;
};

SearchTexts MakeSearchTexts(const NodeInterface& descriptor, const Node& node);
/// Of all node types, in the order of the catalogue; of one that cannot be made, the names alone.
std::vector<SearchTexts> MakeSearchTexts(const ScEng::NodeCatalog& catalog);

/// The places of the texts that hold all of the words, the best first: what is found in a name comes before what is
/// found in keywords (an earlier one before a later one), then sentences, then attributes. Case does not count, and
/// British and American spellings are one.
///
/// A word is looked for at the beginnings of words; only where that finds nothing, anywhere.
std::vector<std::size_t> Search(const std::vector<SearchTexts>& texts, const std::vector<std::string>& words);

/// Every name, keyword and attribute that a search can be for.
std::vector<std::string> ListSearchWords(const ScEng::NodeCatalog& catalog, const std::vector<SearchTexts>& texts);

/// What is said of a task that no node does; empty where the words are of no such task.
std::string DescribeMissing(const std::vector<std::string>& words);

/// How several nodes, or one in a way that is not obvious, do what is searched for; a sentence each.
std::vector<std::string> FindHints(const std::vector<std::string>& words);
