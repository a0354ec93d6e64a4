// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Nodes/NodeSearch.h"
#include "Host/Tools/NodeLibrary.h"

using ScEng::MakeSearchTexts;
using ScEng::Search;
using ScEng::SearchTexts;

/// Every name, keyword and attribute that a search can be for.
std::vector<std::string> ListSearchWords(const ScEng::NodeCatalog& catalog, const std::vector<SearchTexts>& texts);

/// What is said of a task that no node does; empty where the words are of no such task.
std::string DescribeMissing(const std::vector<std::string>& words);

/// How several nodes, or one in a way that is not obvious, do what is searched for; a sentence each.
std::vector<std::string> FindHints(const std::vector<std::string>& words);
