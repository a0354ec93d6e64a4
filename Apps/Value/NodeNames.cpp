// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/NodeNames.h"

#include <cstddef>
#include <sstream>
#include <string_view>
#include <vector>

#include "Apps/Value/Common.h"
#include "Apps/Value/NodeSearch.h"
#include "Apps/Value/UsageText.h"
#include "Host/Util/ClosestName.h"

namespace {

// Words that are longer, or more, are no node's name, and looking for what they may mean would only take time.
constexpr std::size_t kLongestName = 200;

std::vector<std::string> SplitAtBlanks(const std::string& text) {
  std::vector<std::string> words;
  std::istringstream stream(text);
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

/// The quotation marks of text programs, which a shell takes for letters.
std::string RemoveQuotes(std::string text) {
  constexpr std::string_view kQuotes[] = {"\u201C", "\u201D", "\u201E", "\u2018", "\u2019", "\u201A"};
  for (const std::string_view quote : kQuotes) {
    for (std::size_t at = text.find(quote); at != std::string::npos; at = text.find(quote))
      text.erase(at, quote.size());
  }
  return text;
}

/// How many of the words name a node, taken from the first on; 0 where none do.
std::size_t CountNameWords(const ScEng::NodeCatalog& catalog, const std::vector<std::string>& words) {
  for (std::size_t count = words.size(); count-- > 1;) {
    const auto end = words.begin() + static_cast<std::ptrdiff_t>(count);
    if (catalog.FindWritten(JoinWords({words.begin(), end})) != nullptr) return count;
  }
  return 0;
}

std::vector<std::string> FindClosest(const ScEng::NodeCatalog& catalog, const std::string& name) {
  std::vector<std::string> names;
  std::vector<std::string> type_names;
  for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
    names.push_back(descriptor->GetName());
    type_names.push_back(descriptor->GetNodeFactory()->GetTypeName());
  }
  std::vector<std::string> closest = ScEng::FindClosestNames(name, names);
  return closest.empty() ? ScEng::FindClosestNames(name, type_names) : closest;
}

/// "; "value nodes slope" finds "Relief"": how to look for what was written.
std::string SuggestSearch(const ScEng::NodeCatalog& catalog, std::vector<std::string> words) {
  const std::vector<SearchTexts> texts = MakeSearchTexts(catalog);
  std::vector<std::size_t> found = Search(texts, words);
  if (found.empty()) {
    words = ScEng::FindClosestNames(JoinWords(words), ListSearchWords(catalog, texts), 1);
    found = Search(texts, words);
  }
  if (found.empty()) return "; \"value nodes\" lists them";
  constexpr std::size_t kMostShown = 3;
  const std::vector<NodeInterface*> descriptors = catalog.GetDescriptors();
  std::vector<std::string> names;
  for (std::size_t i = 0; i < found.size() && i < kMostShown; ++i) names.push_back(descriptors[found[i]]->GetName());
  return "; \"value nodes " + JoinWords(words) + "\" finds " + JoinWithLast(QuoteEach(names), " and ");
}

}  // namespace

std::string DescribeUnknownNode(const ScEng::NodeCatalog& catalog, const std::string& written) {
  const std::string start = "there is no node " + ShowWord(written);
  const std::string list = "; \"value nodes\" lists them";
  if (written.size() > kLongestName) return start + list;
  const std::string plain = RemoveQuotes(written);
  if (plain != written && catalog.FindWritten(plain) != nullptr) {
    return start + ": its quotation marks are not those of a shell; write " + ShowWord(plain);
  }
  const std::vector<std::string> words = SplitAtBlanks(plain);
  if (const std::size_t count = CountNameWords(catalog, words); count > 0) {
    const auto end = words.begin() + static_cast<std::ptrdiff_t>(count);
    return start + "; without " + ShowWord(JoinWords({end, words.end()})) + " it is " +
           ShowWord(JoinWords({words.begin(), end}));
  }
  const std::vector<std::string> closest = FindClosest(catalog, plain);
  if (!closest.empty()) return start + "; the closest is " + JoinWithLast(QuoteEach(closest), " or ");
  return start + SuggestSearch(catalog, words);
}
