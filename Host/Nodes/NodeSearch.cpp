// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/NodeSearch.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string_view>
#include <utility>

#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/RefCounter.h"

namespace ScEng {
namespace {

/// How a word was found, the better first.
enum class Match : unsigned { kWord, kBeginning, kInside, kNone };

/// Small letters, and one spelling for words that have two.
std::string Fold(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  constexpr std::pair<std::string_view, std::string_view> kSpellings[] = {
      {"colour", "color"}, {"centre", "center"}, {"grey", "gray"}, {"neighbour", "neighbor"},
      {"alise", "alize"},  {"erise", "erize"},   {"tise", "tize"}};
  for (const auto& [british, american] : kSpellings) {
    for (std::size_t at = text.find(british); at != std::string::npos; at = text.find(british, at)) {
      text.replace(at, british.size(), american);
    }
  }
  return text;
}

bool IsPartOfWord(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0 || (letter & 0x80) != 0; }

Match MatchWord(const std::string& wanted, const std::string& word) {
  if (word == wanted) return Match::kWord;
  if (word.starts_with(wanted)) return Match::kBeginning;
  // "labels" is looked for where "label" stands.
  if (wanted.size() > 3 && (wanted == word + "s" || wanted == word + "es")) return Match::kBeginning;
  if (word.find(wanted) != std::string::npos) return Match::kInside;
  constexpr std::size_t kLongestEnding = 3;
  const bool is_stem = word.size() > 3 && wanted.starts_with(word) && wanted.size() <= word.size() + kLongestEnding;
  return is_stem ? Match::kInside : Match::kNone;
}

/// How well words are found: where and how, then at which place among the keywords.
using Rating = std::pair<std::size_t, std::size_t>;

/// The texts of a node type as words.
class Index {
 public:
  explicit Index(const SearchTexts& texts)
      : fields_{SplitSearchWords(texts.name), SplitSearchWords(texts.keywords), SplitSearchWords(texts.sentence),
                SplitSearchWords(texts.attributes)} {}

  /// The lower the better; nothing where a word is not there, or only worse than `worst` allows.
  [[nodiscard]] std::optional<Rating> Rate(const std::vector<std::string>& wanted, Match worst) const {
    Rating sum;
    for (const std::string& word : wanted) {
      const auto rating = RateWord(word, worst);
      if (!rating) return std::nullopt;
      sum.first += rating->first;
      sum.second += rating->second;
    }
    return sum;
  }

 private:
  [[nodiscard]] std::optional<Rating> RateWord(const std::string& wanted, Match worst) const {
    for (std::size_t field = 0; field < fields_.size(); ++field) {
      Match best = Match::kNone;
      std::size_t place = 0;
      for (std::size_t i = 0; i < fields_[field].size(); ++i) {
        const Match match = MatchWord(wanted, fields_[field][i]);
        if (match < best) place = i;
        best = std::min(best, match);
      }
      if (best > worst) continue;
      return Rating(field * 4 + static_cast<std::size_t>(best), field == kKeywords ? place : 0);
    }
    return std::nullopt;
  }

  /// The field whose words stand in the order of how well they fit.
  static constexpr std::size_t kKeywords = 1;
  std::array<std::vector<std::string>, 4> fields_;
};

/// Display name and class name.
std::string MakeNames(const NodeInterface& descriptor) {
  return descriptor.GetName() + " " + descriptor.GetNodeFactory()->GetTypeName();
}

}  // namespace

std::vector<std::string> SplitSearchWords(const std::string& text) {
  std::vector<std::string> words;
  bool starts = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_hump = i > 0 && std::isupper(static_cast<unsigned char>(text[i])) != 0 &&
                         std::islower(static_cast<unsigned char>(text[i - 1])) != 0;
    if (!IsPartOfWord(text[i])) {
      starts = true;
      continue;
    }
    if (starts || is_hump) words.emplace_back();
    words.back() += text[i];
    starts = false;
  }
  for (std::string& word : words) word = Fold(std::move(word));
  return words;
}

std::vector<std::string> SplitSearchQuery(const std::vector<std::string>& words) {
  std::vector<std::string> query;
  for (const std::string& word : words) {
    for (std::string& part : SplitSearchWords(Fold(word))) query.push_back(std::move(part));
  }
  std::sort(query.begin(), query.end());
  query.erase(std::unique(query.begin(), query.end()), query.end());
  return query;
}

SearchTexts MakeSearchTexts(const NodeInterface& descriptor, const Node& node) {
  SearchTexts texts;
  texts.name = MakeNames(descriptor);
  if (const NodeRecord* record = node.GetRecord()) {
    texts.keywords = std::string(record->keywords) + "," + record->group;
    texts.sentence = record->sentence;
  }
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    texts.attributes += attribute.GetName() + " ";
    for (const std::string& word : attribute.GetChoices()) texts.attributes += word + " ";
    if (const AttributeRow* row = attribute.GetRow()) texts.attributes += std::string(row->text) + " ";
  }
  return texts;
}

std::vector<SearchTexts> MakeSearchTexts(const NodeCatalog& catalog) {
  std::vector<SearchTexts> texts;
  for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
    SearchTexts& own = texts.emplace_back();
    Status status;
    const RefPtr<Node> node = CreateNode(*descriptor, status);
    // What is wrong with a node is told where it is shown; until then its names are all there is of it.
    static_cast<void>(CallTypeGuarded(*descriptor, "its description", [&] {
      own.name = MakeNames(*descriptor);
      if (node) own = MakeSearchTexts(*descriptor, *node);
    }));
  }
  return texts;
}

std::vector<std::size_t> Search(const std::vector<SearchTexts>& texts, const std::vector<std::string>& words) {
  const std::vector<std::string> query = SplitSearchQuery(words);
  if (query.empty()) return {};
  const std::vector<Index> indices(texts.begin(), texts.end());
  std::vector<std::pair<Rating, std::size_t>> found;
  for (const Match worst : {Match::kBeginning, Match::kInside}) {
    for (std::size_t i = 0; i < indices.size(); ++i) {
      if (const auto rating = indices[i].Rate(query, worst)) found.emplace_back(*rating, i);
    }
    if (!found.empty()) break;
  }
  std::sort(found.begin(), found.end());
  std::vector<std::size_t> places;
  places.reserve(found.size());
  for (const auto& [rating, place] : found) places.push_back(place);
  return places;
}

}  // namespace ScEng
